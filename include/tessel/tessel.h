#pragma once

/// @mainpage Tessel
/// The operating-system abstraction library of a medical imaging workstation. This header brings all of it;
/// each family also has a header of its own, and that header is its manual.

#include <tessel/foundation.h>
#include <tessel/media.h>
#include <tessel/messaging.h>
#include <tessel/net.h>
#include <tessel/system.h>
#include <tessel/ui.h>
