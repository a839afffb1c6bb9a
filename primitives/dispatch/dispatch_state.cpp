#include "primitives/dispatch/dispatch_state.h"

#include "primitives/dispatch/cpu_query.h"

namespace nuv::prim::dispatch {

Ipp64u ownFeaturesMask = 7;
Ipp64u ownFeatures = 0;
int ownFeaturesAreValid = 0;
int ownStatus = 1;
int cacheSize = 0;

}  // namespace nuv::prim::dispatch

extern "C" void nuvResetDispatchState(void) {
    using namespace nuv::prim::dispatch;
    ippJumpIndexForMergedLibs = 0;
    ippJumpIndexForMergedLibsLP = 0;
    ownFeaturesMask = 7;
    ownFeatures = 0;
    ownFeaturesAreValid = 0;
    ownStatus = 1;
    cacheSize = 0;
}
