#pragma once

#include <cstdint>
#include <filesystem>

namespace zepbmp::transition {

/// While it lives, this process cannot read bytes begin..end-1 of a file, as if the disk were failing there.
class UnreadableBytes {
public:
    UnreadableBytes(const std::filesystem::path& path, int64_t begin, int64_t end);
    UnreadableBytes(const UnreadableBytes&) = delete;
    UnreadableBytes& operator=(const UnreadableBytes&) = delete;
    ~UnreadableBytes();

    /// How many reads have failed.
    int failures() const;
};

/// While it lives, this process has a file system that lacks a means of renaming: as NFS does, or one without links too.
class PoorFileSystem {
public:
    explicit PoorFileSystem(bool has_links);
    PoorFileSystem(const PoorFileSystem&) = delete;
    PoorFileSystem& operator=(const PoorFileSystem&) = delete;
    ~PoorFileSystem();
};

}  // namespace zepbmp::transition
