#pragma once

#include <tessel/messaging/host.h>
#include <tessel/messaging/hostrequest.h>
#include <tessel/messaging/mail.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/postoffice.h>
#include <tessel/messaging/resource.h>
