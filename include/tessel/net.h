#pragma once

#include <tessel/net/commmsg.h>
#include <tessel/net/etheraddr.h>
#include <tessel/net/ipaddress.h>
#include <tessel/net/mailslot.h>
#include <tessel/net/msgsocket.h>
#include <tessel/net/namedpipe.h>
#include <tessel/net/networkid.h>
#include <tessel/net/networkshare.h>
#include <tessel/net/securityfilter.h>
#include <tessel/net/socket.h>
