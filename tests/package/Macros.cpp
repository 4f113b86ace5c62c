#include <cstddef>
#undef NOMINMAX // set by the C++ library
#include <tessel/tessel.h>

#if defined(NOMINMAX) || defined(WIN32_LEAN_AND_MEAN)
#error "a header decides what <windows.h> declares for the program"
#endif
