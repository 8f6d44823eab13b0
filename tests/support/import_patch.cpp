#include "support/import_patch.h"

#include <stdexcept>

namespace morvane::test {

void FailForMissingImport(const std::string& name) {
    throw std::runtime_error("not imported: " + name);
}

}  // namespace morvane::test
