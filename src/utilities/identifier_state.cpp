#include "utilities/identifier_state.h"

namespace temvar {

namespace {
IdentifierState state;
}  // namespace

IdentifierState& GetIdentifierState() { return state; }

}  // namespace temvar
