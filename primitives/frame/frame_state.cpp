#include "primitives/frame/frame_state.h"

#include "primitives/frame/cpu_query.h"

namespace nuv::prim::frame {

Ipp64u ownFeaturesMask = 7;
Ipp64u ownFeatures = 0;
int ownFeaturesAreValid = 0;
int ownStatus = 1;
int cacheSize = 0;

}  // namespace nuv::prim::frame

extern "C" void nuvResetFrameState(void) {
    using namespace nuv::prim::frame;
    ippJumpIndexForMergedLibs = 0;
    ippJumpIndexForMergedLibsLP = 0;
    ownFeaturesMask = 7;
    ownFeatures = 0;
    ownFeaturesAreValid = 0;
    ownStatus = 1;
    cacheSize = 0;
}
