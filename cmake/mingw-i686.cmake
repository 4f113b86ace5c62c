set(CMAKE_SYSTEM_PROCESSOR i686)
set(mingw_machine i686-w64-mingw32)
set(mingw_wine wine)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
