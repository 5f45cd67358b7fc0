# One interface target carries language standard, warnings and Qt's strictness for every target.
add_library(kibo_common INTERFACE)
target_compile_features(kibo_common INTERFACE cxx_std_20)
target_compile_options(kibo_common INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wimplicit-fallthrough -Wswitch -Werror=switch -Werror=return-type -Wno-psabi
    $<$<BOOL:${KIBO_WERROR}>:-Werror>)
target_compile_definitions(kibo_common INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH QT_STRICT_ITERATORS QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(KIBO_SANITIZE)
    target_compile_options(kibo_common INTERFACE -fsanitize=${KIBO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(kibo_common INTERFACE -fsanitize=${KIBO_SANITIZE})
endif()

# kibo_module(<folder> SOURCES ... LINK ...): the static library Kibo::<folder> of one source folder.
#
# Headers are included as "folder/header.h". Each library publishes only its own folder, through a link
# below <build>/include/<folder>, so that including a header of a folder that is not linked does not compile.
function(kibo_module folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(kibo_${folder} STATIC ${ARG_SOURCES})
    add_library(Kibo::${folder} ALIAS kibo_${folder})
    set(root "${CMAKE_BINARY_DIR}/include/${folder}")
    file(MAKE_DIRECTORY "${root}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${root}/${folder}" SYMBOLIC)
    target_include_directories(kibo_${folder} PUBLIC "${root}")
    target_link_libraries(kibo_${folder} PUBLIC kibo_common ${ARG_LINK})
endfunction()

# kibo_separate_symbols(<target>): what a debugger and the addresses of a crash need stands in a file of its own beside a
# release build's program (<program>.debug), which is not shipped.
function(kibo_separate_symbols target)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release" OR KIBO_SANITIZE)
        return()
    endif()
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug "$<TARGET_FILE:${target}>" "$<TARGET_FILE:${target}>.debug"
        COMMAND ${CMAKE_OBJCOPY} --strip-all "--add-gnu-debuglink=$<TARGET_FILE:${target}>.debug" "$<TARGET_FILE:${target}>")
endfunction()

# kibo_test(<name> SOURCES ... LINK ... [TIMEOUT s] [LABELS ...]): one GoogleTest program, one CTest entry.
# Tests run without a display; those of one program share a process, so servers are started once. A build with
# sanitizers has only the tests labelled "sanitize".
function(kibo_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    if(KIBO_SANITIZE AND NOT "sanitize" IN_LIST ARG_LABELS)
        return()
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINK})
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    # Half of the time that a test takes to compile goes into optimising it and into checks of its own arithmetic.
    target_compile_options(${name} PRIVATE -O0 -fno-sanitize=undefined)
    target_compile_definitions(${name} PRIVATE KIBO_SOURCE_DIR="${CMAKE_SOURCE_DIR}" KIBO_BINARY_DIR="${CMAKE_BINARY_DIR}")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()
