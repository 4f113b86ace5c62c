#pragma once

#include <tessel/foundation/platform.h>

/// Status code of success. Any other status is a Win32 or Winsock error, or a code documented with the operation.
inline constexpr unsigned long STATUS_OK = 0;

/// The calling thread's last Win32 error (GetLastError).
/// @return the error code; 0: none
TESSEL_API unsigned long GetError();
