@echo off
rem cekver [DRIVER [FOLDER]]: writes ChromeDriver's version line into the file "ver" of FOLDER (else this script's); the
rem gateway compares it with the browser's version at its start. Without DRIVER it is the one beside this script.
set "driver=%~1"
if "%driver%"=="" set "driver=%~dp0chromedriver.exe"
set "folder=%~2"
if "%folder%"=="" set "folder=%~dp0."
cd /d "%folder%"
"%driver%" --version > ver
