#include "output_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "error.h"

namespace zepbmp::transition {

namespace fs = std::filesystem;

namespace {

/// rename() that fails with EEXIST where it would replace a file. Network file systems know no RENAME_NOREPLACE; a link
/// never replaces. Where there are no links either, a file that appears between look and rename is replaced.
int rename_to_free_place(const char* from, const char* to) {
    int result = renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
    if (result == 0 || errno != EINVAL)
        return result;
    result = link(from, to);
    if (result == 0) {
        unlink(from);
    } else if (errno == EPERM || errno == ENOSYS || errno == EOPNOTSUPP) {
        struct stat state {};
        if (lstat(to, &state) == 0)
            errno = EEXIST;
        else if (errno == ENOENT)
            result = rename(from, to);
    }
    return result;
}

}  // namespace

OutputFile::OutputFile(const fs::path& place, bool overwrite) : overwrite_(overwrite) {
    std::error_code ignored;
    const fs::path target = fs::canonical(place, ignored);  // through symbolic links; empty when nothing is there
    place_ = target.empty() ? place : target;
    if (fs::exists(place_, ignored)) {
        if (!fs::is_regular_file(place_, ignored))
            throw Error(place.string() + ": is not a plain file", kExitRefused);
        if (!overwrite)
            throw Error(place.string() + ": exists already; give -y to overwrite it", kExitRefused);
    }
    temporary_name_ = (place_.parent_path() / ("." + place_.filename().string() + ".XXXXXX")).string();
    const int file = mkstemp(temporary_name_.data());
    if (file < 0)
        throw Error(place.string() + ": cannot be written: " + std::strerror(errno), kExitRefused);
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(file, 0666 & ~mask);
    close(file);
}

OutputFile::~OutputFile() {
    if (!committed_)
        unlink(temporary_name_.c_str());
}

void OutputFile::commit() {
    const char* from = temporary_name_.c_str();
    // Under its own name there is a whole file, even after the machine has lost its power.
    const int file = open(from, O_RDONLY | O_CLOEXEC);
    if (file < 0 || fsync(file) != 0) {
        const int reason = errno;
        if (file >= 0)
            close(file);
        throw Error(place_.string() + ": cannot be written: " + std::strerror(reason));
    }
    close(file);
    if ((overwrite_ ? rename(from, place_.c_str()) : rename_to_free_place(from, place_.c_str())) != 0)
        throw Error(place_.string() + ": cannot be put in place: " + std::strerror(errno));
    committed_ = true;
}

}  // namespace zepbmp::transition
