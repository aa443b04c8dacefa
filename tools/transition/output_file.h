#pragma once

#include <filesystem>
#include <string>

namespace zepbmp::transition {

/// A file in the making: written under a hidden name beside its place, moved there whole by commit(), removed
/// otherwise.
class OutputFile {
public:
    /// Creates the hidden file, empty. Refuses (Error) when the folder cannot be written, when the place is taken and
    /// `overwrite` is false, or when what is there is no plain file.
    OutputFile(const std::filesystem::path& place, bool overwrite);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    const std::string& temporary_name() const { return temporary_name_; }

    /// Moves the finished file to its place; a file that came there meanwhile is kept unless `overwrite` was given.
    void commit();

private:
    std::filesystem::path place_;
    std::string temporary_name_;
    bool overwrite_;
    bool committed_ = false;
};

}  // namespace zepbmp::transition
