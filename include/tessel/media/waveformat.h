#pragma once

#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <mmreg.h>

#include <msacm.h>

/// Format record of GSM 6.10 sound.
using WAVEFORMATGSM610 = GSM610WAVEFORMAT;
