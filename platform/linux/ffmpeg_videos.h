#pragma once

#include "platform/linux/videos.h"

/// Videos by the FFmpeg libraries: what the module's file is asked for, by this name.
extern "C" const veyla::Videos* veylaFfmpegVideos();
