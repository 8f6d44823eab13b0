#include "app/process.h"

namespace morvane {

namespace {

ProcessState process;

}  // namespace

ProcessState& Process() {
    return process;
}

}  // namespace morvane
