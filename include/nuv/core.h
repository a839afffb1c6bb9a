/// @file
/// The whole C++ interface of libnuv_core: value types, images, containers, variants, the
/// log and the debug printers.
#pragma once

#include <nuv/core/Circle.h>
#include <nuv/core/Color.h>
#include <nuv/core/Exception.h>
#include <nuv/core/Line.h>
#include <nuv/core/List.h>
#include <nuv/core/Log.h>
#include <nuv/core/Map.h>
#include <nuv/core/Point.h>
#include <nuv/core/Roi.h>
#include <nuv/core/SharedBase.h>
#include <nuv/core/Size.h>
#include <nuv/core/StringList.h>
#include <nuv/core/Vector.h>
#include <nuv/core/fromString.h>
#include <nuv/core/printers.h>

#include <nuv/core/image/Format.h>
#include <nuv/core/image/BufferStore.h>
#include <nuv/core/image/Image.h>
#include <nuv/core/image/ImageInfo.h>
#include <nuv/core/image/OpenCV.h>
#include <nuv/core/image/Segment.h>
#include <nuv/core/image/SegmentList.h>

#include <nuv/core/variant/Converter.h>
#include <nuv/core/variant/Id.h>
#include <nuv/core/variant/Math.h>
#include <nuv/core/variant/Variant.h>
