/// @file
/// The whole C++ front end of nuv: include this, link nuv::cv.
#pragma once

#include <nuv/core.h>
#include <nuv/cv/Exception.h>
#include <nuv/cv/HoughTransform.h>
#include <nuv/cv/LineDetector.h>
#include <nuv/cv/MatchTemplate.h>
#include <nuv/cv/Segment.h>
#include <nuv/cv/SegmentColorIndex.h>
#include <nuv/cv/SegmentList.h>
#include <nuv/cv/Segmenter.h>
#include <nuv/cv/addition.h>
#include <nuv/cv/canny.h>
#include <nuv/cv/colorconversion.h>
#include <nuv/cv/filter.h>
#include <nuv/cv/init.h>
#include <nuv/cv/labelmarkers.h>
#include <nuv/cv/mirror.h>
#include <nuv/cv/statistics.h>
#include <nuv/cv/threshold.h>
#include <nuv/cv/tools.h>
#include <nuv/cv/transpose.h>
#include <nuv/primitives.h>
