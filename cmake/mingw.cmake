# Cross-compiler for Windows; the including file sets mingw_machine and mingw_wine.
set(CMAKE_SYSTEM_NAME Windows)

# Only the posix variant has std::thread and std::mutex.
find_program(CMAKE_CXX_COMPILER NAMES ${mingw_machine}-g++-posix ${mingw_machine}-g++ REQUIRED)
find_program(CMAKE_C_COMPILER NAMES ${mingw_machine}-gcc-posix ${mingw_machine}-gcc REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${mingw_machine}-windres windres REQUIRED)

set(CMAKE_FIND_ROOT_PATH /usr/${mingw_machine})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

if(NOT CMAKE_HOST_WIN32)
  # Wine's loader for the program's bitness; the other one would start a second loader.
  find_program(TESSEL_WINE NAMES ${mingw_wine} wine PATHS /usr/lib/wine)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine.sh ${TESSEL_WINE})
endif()
