#pragma once

#include <filesystem>
#include <string>

/// Sends a file to a receiver that it starts, and compares the copy.
/// @param file      the file to send
/// @param copy      where the receiver writes
/// @param receiver  the program to start as the receiver
/// @param stallMs   milliseconds that the receiver waits before it takes the first message
/// @return the process's exit code
int Send(const std::filesystem::path& file, const std::filesystem::path& copy, const std::wstring& receiver,
         unsigned long stallMs);
