#pragma once

/// @mainpage Tessel
/// The operating-system abstraction library of a medical imaging workstation. This header includes everything; each
/// subsystem and each class also has its own header, which is its manual.

#include <tessel/foundation.h>
#include <tessel/media.h>
#include <tessel/messaging.h>
#include <tessel/net.h>
#include <tessel/system.h>
#include <tessel/ui.h>
