#pragma once

#include "platform/linux/pictures.h"

/// Pictures by Cairo: what the module's file is asked for, by this name.
extern "C" const veyla::Pictures* veylaCairoPictures();
