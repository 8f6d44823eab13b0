#include "pin/engine.h"

namespace morvane {
namespace {

PinEngine engine;

}  // namespace

PinEngine& Engine() {
    return engine;
}

}  // namespace morvane
