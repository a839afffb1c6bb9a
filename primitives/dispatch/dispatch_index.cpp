// The two exported selection words. They lie in zero-initialised storage, so a host that
// never calls a selection function runs every primitive's m7 body.
#include <nuv/primitives.h>

extern "C" {
Ipp32u ippJumpIndexForMergedLibs = 0;
Ipp32u ippJumpIndexForMergedLibsLP = 0;
}
