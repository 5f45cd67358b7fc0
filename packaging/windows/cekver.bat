@echo off
rem Leaves ChromeDriver's version line in the file "ver" beside this one, where Kibo compares it with Chrome's.
rem A chromedriver.exe beside it comes before one in the PATH.
cd /d "%~dp0"
chromedriver.exe --version > ver.new 2> nul
if errorlevel 1 (
    del ver.new
) else (
    move /y ver.new ver > nul
)
