# A first settings file that chooses the local store, where none stands yet. The program adds the other keys itself.
if(NOT EXISTS "${FILE}")
    file(WRITE "${FILE}" "[DB]\r\nUseMDB=Y\r\n")
endif()
