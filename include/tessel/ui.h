#pragma once

#include <tessel/ui/brush.h>
#include <tessel/ui/cursor.h>
#include <tessel/ui/dialoginterface.h>
#include <tessel/ui/fieldtype.h>
#include <tessel/ui/messagebox.h>
#include <tessel/ui/notify.h>
#include <tessel/ui/views.h>
