#pragma once

#include <tessel/system/command.h>
#include <tessel/system/datetime.h>
#include <tessel/system/disk.h>
#include <tessel/system/eventlog.h>
#include <tessel/system/file.h>
#include <tessel/system/processor.h>
#include <tessel/system/registry.h>
#include <tessel/system/service.h>
#include <tessel/system/version.h>
