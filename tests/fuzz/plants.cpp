#include "fuzz/plants.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>

#include "fuzz/guarded_memory.h"

namespace morvane::test {
namespace {

// Volatile, so that the compiler neither sees nor removes what is wrong with it.
constexpr std::size_t Size = 24;
volatile std::size_t end = Size;
volatile std::size_t before = 1;
volatile int largest = std::numeric_limits<int>::max();
volatile wchar_t seen = L'\0';
char* volatile allocation = nullptr;

void WriteBehindABlock() {
    const auto block = std::make_unique<char[]>(Size);
    block.get()[end] = 'x';
}

void WriteBeforeABlock() {
    const auto block = std::make_unique<char[]>(Size);
    *(block.get() - before) = 'x';
}

// Not freed: the check of all heaps has to find it.
void WriteBehindAnAllocation() {
    allocation = static_cast<char*>(std::malloc(Size));
    allocation[end] = 'x';
}

void ReadBehindTheText() {
    GuardedMemory memory(Size);
    seen = memory.Place(L"text", Guard::BehindEnd).data()[end];
}

void ReadBeforeTheText() {
    GuardedMemory memory(Size);
    seen = *(memory.Place(L"text", Guard::BeforeBegin).data() - end);
}

void OverflowANumber() {
    largest = largest + 1;
}

void BreakAPrecondition() {
    constexpr std::wstring_view Text = L"text";
    seen = Text[end];
}

struct Plant {
    std::wstring_view name;
    void (*plant)();
};

constexpr Plant Plants[] = {
    {L"block", WriteBehindABlock},         {L"block-before", WriteBeforeABlock},
    {L"heap", WriteBehindAnAllocation},    {L"behind", ReadBehindTheText},
    {L"before", ReadBeforeTheText},        {L"undefined", OverflowANumber},
    {L"precondition", BreakAPrecondition},
};

}  // namespace

bool PlantFault(std::wstring_view name) {
    const auto* const found = std::ranges::find(Plants, name, &Plant::name);
    if (found == std::end(Plants)) {
        return false;
    }
    found->plant();
    return true;
}

}  // namespace morvane::test
