// The whole C++ front end of nuv: include this, link nuv::cv.
#pragma once

#include <nuv/core.h>
#include <nuv/cv/Exception.h>
#include <nuv/cv/tools.h>
#include <nuv/primitives.h>
