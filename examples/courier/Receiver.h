#pragma once

#include <filesystem>

/// Writes what a sender sends to a file.
/// @param copy      the file to write
/// @param senderId  Win32 id of the sending process
/// @param tag       the run's tag
/// @param stallMs   milliseconds to wait before the first message is taken
/// @return the process's exit code
int Receive(const std::filesystem::path& copy, unsigned long senderId, unsigned long tag, unsigned long stallMs);
