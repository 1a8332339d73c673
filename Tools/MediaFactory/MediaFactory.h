#pragma once

#include "MediaFactory/Bytes.h"
#include "MediaFactory/MXFMaker.h"
#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
