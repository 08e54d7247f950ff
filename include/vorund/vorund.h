#pragma once

/// The whole public interface of the core library, save `yaml_value.h`, which needs yaml-cpp.
#include "vorund/config.h"
#include "vorund/debugger.h"
#include "vorund/floorplan_segmenter.h"
#include "vorund/graph.h"
#include "vorund/graph_processor.h"
#include "vorund/image_utils.h"
#include "vorund/merge_processor.h"
#include "vorund/over_segment_processor.h"
#include "vorund/ridge_filter.h"
#include "vorund/watershed_segmenter.h"
