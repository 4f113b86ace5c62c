#pragma once

#include <tessel/foundation/clock.h>
#include <tessel/foundation/containers.h>
#include <tessel/foundation/drive.h>
#include <tessel/foundation/errormode.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/identifier.h>
#include <tessel/foundation/memory.h>
#include <tessel/foundation/message.h>
#include <tessel/foundation/module.h>
#include <tessel/foundation/platform.h>
#include <tessel/foundation/process.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/status.h>
#include <tessel/foundation/strings.h>
#include <tessel/foundation/wait.h>
#include <tessel/foundation/window.h>
