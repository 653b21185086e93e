#pragma once

// From any source of frames to measurements: what the tool, Python, other programs and services share. Nothing is
// printed, no signal is handled, no state belongs to the process.

#include "measure/archive/zarr_references.h"
#include "measure/calibration/calibration_fit.h"
#include "measure/error.h"
#include "measure/finding.h"
#include "measure/frame/additions.h"
#include "measure/frame/calibration_facts.h"
#include "measure/frame/frame_index.h"
#include "measure/frame/frame_reader.h"
#include "measure/frame/measurement.h"
#include "measure/frame/options.h"
#include "measure/frame/pixel_walk.h"
#include "measure/frame/region.h"
#include "measure/in_order.h"
#include "measure/recordings/blocks.h"
#include "measure/recordings/recording.h"
#include "measure/series/series.h"
#include "measure/sources/frame_format.h"
#include "measure/sources/frame_numbers.h"
#include "measure/sources/guess_format.h"
#include "measure/sources/source.h"
#include "measure/time.h"
