# Packs one folder that an operator unpacks; nothing of it depends on where it is put.
set(stores "${CMAKE_SOURCE_DIR}/src/store/schema")
set(packaging "${CMAKE_SOURCE_DIR}/packaging/windows")
install(FILES "${CMAKE_SOURCE_DIR}/packaging/cekver/cekver.bat" "${packaging}/README.txt" DESTINATION .)
install(FILES "${stores}/mysql.sql" "${stores}/access.sql" "${stores}/sqlite.sql" DESTINATION schema)

# What is linked into the programs, under the names of Debian's packages that it comes from.
foreach(package qt6-base-dev libcurl4-openssl-dev libsqlite3-0 libspdlog-dev libfmt-dev
        mingw-w64-x86-64-dev g++-mingw-w64-x86-64-posix)
    install(FILES "/usr/share/doc/${package}/copyright" DESTINATION licences RENAME "${package}.txt" OPTIONAL)
endforeach()
foreach(licence LGPL-3 GPL-3)
    install(FILES "/usr/share/common-licenses/${licence}" DESTINATION licences RENAME "${licence}.txt" OPTIONAL)
endforeach()

set(CPACK_PACKAGE_FILE_NAME kibo-windows)
set(CPACK_PACKAGE_VENDOR Kibo)
include(CPack)
