#pragma once

#include <cstddef>

namespace tessel {

/// Whether addresses and handles take 32 bits.
///
/// The layouts of the exported classes are stated for 32-bit programs. Where a class holds addresses or handles,
/// its checks apply to these alone:
///
///     static_assert(!kOn32Bits || offsetof(CMailBox, m_pHeader) == 8);
///
/// The checks of a subsystem stand together in <subsystem>/Layouts.cpp. Those of private fields are members of the
/// class's friend, such as `struct CMailBoxLayout`.
inline constexpr bool kOn32Bits = sizeof(void*) == 4;

} // namespace tessel
