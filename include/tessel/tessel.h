#pragma once

/// @mainpage Tessel
/// The operating-system abstraction library of a medical imaging workstation. This header brings all of it;
/// each family also has a header of its own, and that header is its manual.

#include <tessel/address.h>
#include <tessel/audio.h>
#include <tessel/audioconvert.h>
#include <tessel/avifile.h>
#include <tessel/brush.h>
#include <tessel/channels.h>
#include <tessel/command.h>
#include <tessel/commmsg.h>
#include <tessel/datetime.h>
#include <tessel/dialog.h>
#include <tessel/disk.h>
#include <tessel/eventlog.h>
#include <tessel/file.h>
#include <tessel/host.h>
#include <tessel/identifier.h>
#include <tessel/mailbox.h>
#include <tessel/memory.h>
#include <tessel/messagebox.h>
#include <tessel/msgsocket.h>
#include <tessel/networkid.h>
#include <tessel/networkshare.h>
#include <tessel/notify.h>
#include <tessel/postoffice.h>
#include <tessel/processor.h>
#include <tessel/registry.h>
#include <tessel/resource.h>
#include <tessel/securityfilter.h>
#include <tessel/service.h>
#include <tessel/socket.h>
#include <tessel/sound.h>
#include <tessel/status.h>
#include <tessel/strings.h>
#include <tessel/synchronisation.h>
#include <tessel/system.h>
#include <tessel/version.h>
#include <tessel/views.h>
#include <tessel/waveformat.h>
