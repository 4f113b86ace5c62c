#pragma once

#include <string>

/// Kills busy senders and receivers of both bitnesses at random times, while four programs exchange messages. This
/// process must not have a post office.
/// @param kills     how many programs to kill
/// @param messages  how many messages the four exchange at least
/// @param seed      of the random times
/// @return what went wrong; empty: nothing
std::string KillBusyPrograms(unsigned int kills, unsigned long messages, unsigned int seed);

/// Lets programs return from main() while two of their threads send.
/// @param programs  how many
/// @return what went wrong; empty: nothing
std::string ReturnWhileSending(unsigned int programs);
