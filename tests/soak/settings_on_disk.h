#pragma once

// The settings file of the session, as somebody else handles it. Every call changes in one step
// what the program reads, so that a pass meets the state before it or the state after it.

#include <string>
#include <string_view>

#include "base/owners.h"
#include "pin/pin_list.h"

namespace morvane::test {

enum class SettingsState {
    Text,
    Missing,
    Folder,       // a folder of that name
    Locked,       // held open by somebody who shares it with nobody
    WriteLocked,  // held open by somebody who lets others read only
};

// A failing call throws std::runtime_error.
class SettingsOnDisk {
public:
    // From any state but the two locked ones.
    void Replace(std::string_view bytes);
    void PutFolderInPlace();

    // From Text only.
    void Truncate(std::size_t size);
    void Append(std::string_view bytes);
    void Delete();
    void Lock(SettingsState kind);

    // From the locked states, back to Text.
    void Unlock();

    [[nodiscard]] SettingsState State() const { return state_; }

    // What the file held when it was last in the state Text.
    [[nodiscard]] const std::string& Bytes() const { return bytes_; }

    // What a program reads now.
    [[nodiscard]] PinList Readable() const;

    // The program saves this list, or tries to.
    void ExpectSaved(const PinList& list);

    // Empty, or how the file differs from what it must hold.
    [[nodiscard]] std::string Difference() const;

private:
    SettingsState state_ = SettingsState::Missing;
    std::string bytes_;
    FileHandle lock_;
};

}  // namespace morvane::test
