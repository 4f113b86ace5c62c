#pragma once

#include <tessel/media/audio.h>
#include <tessel/media/audioconvert.h>
#include <tessel/media/avifile.h>
#include <tessel/media/sound.h>
#include <tessel/media/waveformat.h>
