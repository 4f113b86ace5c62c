#pragma once

#include <string>

/// Kills programs after every instruction of the post office's operations, and prints what the others noticed.
/// @param stride  of the instructions that change nothing for others only every so many, to be quick
/// @param offset  which of them
/// @param name    the only operation; empty: all
/// @return whether nothing went wrong
bool KillEverywhere(unsigned long stride, unsigned long offset, const std::string& name);

/// Kills busy programs at random times, lets others return while they send, and prints what was lost.
/// @param seed  of the random times
/// @return whether nothing went wrong
bool KillAtRandom(unsigned int seed);
