#include "soak/settings_on_disk.h"

#include <functional>
#include <optional>
#include <stdexcept>

#include "base/files.h"
#include "base/win.h"
#include "support/printed.h"
#include "support/settings_reference.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/wait.h"

namespace morvane::test {
namespace {

// Some changes fail while the program is reading the file.
void Retry(const char* what, const std::function<bool()>& attempt) {
    if (!WaitUntil(attempt)) {
        throw std::runtime_error(std::string("settings file: cannot ") + what);
    }
}

FileHandle Open(DWORD access, DWORD sharing) {
    FileHandle file;
    Retry("open", [&] {
        file = HoldFile(SettingsPath(), access, sharing);
        return static_cast<bool>(file);
    });
    return file;
}

}  // namespace

void SettingsOnDisk::Replace(std::string_view bytes) {
    if (state_ == SettingsState::Folder) {
        Retry("remove the folder", [] { return RemoveDirectoryW(SettingsPath().c_str()) != 0; });
    }
    WriteSettings(bytes);
    bytes_ = bytes;
    state_ = SettingsState::Text;
}

void SettingsOnDisk::PutFolderInPlace() {
    if (state_ == SettingsState::Text) {
        Delete();
    }
    Retry("make a folder", [] { return CreateDirectoryW(SettingsPath().c_str(), nullptr) != 0; });
    state_ = SettingsState::Folder;
}

void SettingsOnDisk::Truncate(std::size_t size) {
    const FileHandle file = Open(GENERIC_WRITE, FullSharing);
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(size);
    Retry("truncate", [&] {
        return SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) != FALSE &&
               SetEndOfFile(file.get()) != FALSE;
    });
    bytes_.resize(size);
}

void SettingsOnDisk::Append(std::string_view bytes) {
    const FileHandle file = Open(FILE_APPEND_DATA, FullSharing);
    DWORD count = 0;
    if (WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) ==
            FALSE ||
        count != bytes.size()) {
        throw std::runtime_error("settings file: cannot append");
    }
    bytes_ += bytes;
}

void SettingsOnDisk::Delete() {
    Retry("delete", [] { return DeleteFileW(SettingsPath().c_str()) != 0; });
    state_ = SettingsState::Missing;
}

void SettingsOnDisk::Lock(SettingsState kind) {
    lock_ = Open(GENERIC_READ, kind == SettingsState::Locked ? 0 : FILE_SHARE_READ);
    state_ = kind;
}

void SettingsOnDisk::Unlock() {
    lock_.reset();
    state_ = SettingsState::Text;
}

PinList SettingsOnDisk::Readable() const {
    const bool readable = state_ == SettingsState::Text || state_ == SettingsState::WriteLocked;
    return readable ? ReferenceParse(bytes_) : PinList{true, {}};
}

void SettingsOnDisk::ExpectSaved(const PinList& list) {
    if (state_ == SettingsState::Text || state_ == SettingsState::Missing) {
        bytes_ = ReferenceFormat(list);
        state_ = SettingsState::Text;
    }
}

std::string SettingsOnDisk::Difference() const {
    const DWORD attributes = GetFileAttributesW(SettingsPath().c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    const bool isFolder = exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (exists == (state_ == SettingsState::Missing) ||
        isFolder != (state_ == SettingsState::Folder)) {
        return "the settings path is not as expected: a file, a folder or nothing";
    }
    if (state_ != SettingsState::Text) {
        return {};
    }
    const std::optional<std::string> bytes = ReadFileBytes(SettingsPath());
    return bytes == bytes_ ? ""
                           : "the settings file holds " + Printed(bytes.value_or("nothing")) +
                                 " instead of " + Printed(bytes_);
}

}  // namespace morvane::test
