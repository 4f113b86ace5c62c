set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(mingw_machine x86_64-w64-mingw32)
set(mingw_wine wine64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
