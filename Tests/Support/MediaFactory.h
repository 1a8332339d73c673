#pragma once

#include "Support/Media/Bytes.h"
#include "Support/Media/MovieMaker.h"
#include "Support/Media/WaveMaker.h"
