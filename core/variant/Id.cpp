#include <nuv/core/variant/Id.h>

namespace nuv::core::variant {

unsigned int Id::g_id = 1;

Id::Id() : _value(g_id) {
    ++g_id;
}

}  // namespace nuv::core::variant
