# Windows programs made and tested on Debian: MinGW compiles them, Wine runs their tests in a prefix of its own.
# KIBO_WINDOWS_KIT, also from the environment, names the folder of the static Windows libraries (packaging/windows).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(KIBO_WINDOWS_KIT "$ENV{KIBO_WINDOWS_KIT}" CACHE PATH "Folder of the static Windows libraries")
if(KIBO_WINDOWS_KIT)
    list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KIBO_WINDOWS_KIT)
    list(APPEND CMAKE_FIND_ROOT_PATH "${KIBO_WINDOWS_KIT}")
    list(APPEND CMAKE_PREFIX_PATH "${KIBO_WINDOWS_KIT}")
    # Qt's own tools (moc, rcc) run here, so they are Debian's, of the same version as the kit's libraries.
    set(QT_HOST_PATH /usr)
    set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
endif()

find_program(KIBO_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(KIBO_WINE)
    # Without menus, associations and the two add-ons that a new prefix would otherwise ask to download.
    set(CMAKE_CROSSCOMPILING_EMULATOR
        env "WINEPREFIX=${CMAKE_BINARY_DIR}/wine" WINEDEBUG=-all "WINEDLLOVERRIDES=winemenubuilder.exe,mscoree,mshtml=d"
        ${KIBO_WINE})
endif()
