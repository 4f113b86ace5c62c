#pragma once

/// Registers the benchmarks of the tails: how long single messages between two processes take at most.
/// @param slowTrips  round trips to measure at 10 a second
void RegisterTails(int slowTrips);
