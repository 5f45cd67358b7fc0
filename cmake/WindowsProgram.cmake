# What a Windows program takes beyond what a Debian one does: libraries of the kit, Qt's plugins inside the program,
# its resources.

# Debian's header-only libraries, without the rest of /usr/include, which is another system's.
set(headers "${CMAKE_BINARY_DIR}/include/external")
file(MAKE_DIRECTORY "${headers}")
foreach(folder spdlog fmt)
    file(CREATE_LINK "/usr/include/${folder}" "${headers}/${folder}" SYMBOLIC)
endforeach()
add_library(spdlog INTERFACE)
add_library(spdlog::spdlog ALIAS spdlog)
target_include_directories(spdlog SYSTEM INTERFACE "${headers}")
target_compile_definitions(spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
target_link_libraries(spdlog INTERFACE Threads::Threads)

find_library(KIBO_QSQLITE qsqlite PATHS "${KIBO_WINDOWS_KIT}/plugins/sqldrivers" NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(NOT KIBO_QSQLITE)
    message(FATAL_ERROR "The Windows kit \"${KIBO_WINDOWS_KIT}\" has no SQLite driver; packaging/windows/build-kit adds it.")
endif()

# SQLite itself is inside the driver; its header is the same on every system.
file(CREATE_LINK /usr/include/sqlite3.h "${headers}/sqlite3.h" SYMBOLIC)
add_library(SQLite::SQLite3 INTERFACE IMPORTED)
set_target_properties(SQLite::SQLite3 PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${headers}" INTERFACE_LINK_LIBRARIES "${KIBO_QSQLITE};Qt6::Sql")

set(KIBO_WINDOWS_PACKAGING "${CMAKE_SOURCE_DIR}/packaging/windows")
set(plugin_source "${CMAKE_BINARY_DIR}/sqlite_plugin.cpp")
file(CONFIGURE OUTPUT "${plugin_source}" CONTENT "#include <QtPlugin>\nQ_IMPORT_PLUGIN(QSQLiteDriverPlugin)\n")

# kibo_windows_program(<target> [QT] [SQL]): no console, version and icon, one file that needs no other; with QT it brings
# what Qt's windows take along, with SQL Qt's database drivers too.
function(kibo_windows_program target)
    cmake_parse_arguments(ARG "QT;SQL" "" "" ${ARGN})
    set_target_properties(${target} PROPERTIES WIN32_EXECUTABLE ON
        LINK_SEARCH_START_STATIC ON LINK_SEARCH_END_STATIC ON)  # the compiler's libraries too
    set(KIBO_PROGRAM_NAME "${target}")
    configure_file("${KIBO_WINDOWS_PACKAGING}/program.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
    set_property(SOURCE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" PROPERTY OBJECT_DEPENDS
        "${KIBO_WINDOWS_PACKAGING}/program.manifest;${KIBO_WINDOWS_PACKAGING}/kibo.ico")
    install(TARGETS ${target} RUNTIME DESTINATION .)
    if(ARG_SQL)
        target_sources(${target} PRIVATE "${plugin_source}")
        target_link_libraries(${target} PRIVATE "${KIBO_QSQLITE}" Qt6::Sql)
        qt_import_plugins(${target}
            INCLUDE Qt6::QODBCDriverPlugin)
    endif()
    if(ARG_QT)
        qt_import_plugins(${target}
            INCLUDE Qt6::QWindowsIntegrationPlugin Qt6::QWindowsVistaStylePlugin
            EXCLUDE_BY_TYPE imageformats generic tls)
    endif()
endfunction()
