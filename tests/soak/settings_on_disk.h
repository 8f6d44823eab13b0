#pragma once

// Changes the settings file from outside the program. Each call changes what the program reads in
// one step, so a pass sees the state before it or after it.

#include <string>
#include <string_view>

#include "base/owners.h"
#include "pin/pin_list.h"

namespace morvane::test {

enum class SettingsState {
    Text,
    Missing,
    Folder,       // there is a folder of that name
    Locked,       // held open without sharing
    WriteLocked,  // held open, shared for reading only
};

// Calls that fail throw std::runtime_error.
class SettingsOnDisk {
public:
    // From any state except the locked ones.
    void Replace(std::string_view bytes);
    void PutFolderInPlace();

    // From Text only.
    void Truncate(std::size_t size);
    void Append(std::string_view bytes);
    void Delete();
    void Lock(SettingsState kind);

    // From a locked state, back to Text.
    void Unlock();

    [[nodiscard]] SettingsState State() const { return state_; }

    // The contents when the state was last Text.
    [[nodiscard]] const std::string& Bytes() const { return bytes_; }

    // What reading the file gives now.
    [[nodiscard]] PinList Readable() const;

    // Call this when the program saves the list or tries to.
    void ExpectSaved(const PinList& list);

    // How the file differs from what is expected; empty if it does not.
    [[nodiscard]] std::string Difference() const;

private:
    SettingsState state_ = SettingsState::Missing;
    std::string bytes_;
    FileHandle lock_;
};

}  // namespace morvane::test
