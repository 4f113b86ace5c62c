#pragma once

#include <functional>

/// Runs a call one instruction at a time, as far as its instructions are Tessel.dll's; a call from there to another
/// module counts as two: the call, and the return from it.
/// @param call  what to run; it must not throw
/// @param each  called after each instruction with its number, from 1, and whether it was a return from another module;
///              between two instructions of Tessel.dll anything may be done, even ending the process
/// @return how many instructions
unsigned long RunInSteps(const std::function<void()>& call, const std::function<void(unsigned long, bool)>& each);
