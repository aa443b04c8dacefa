// Stands in for three functions of the C library, for this program and the libraries that it loads.
#include "faults.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>

namespace zepbmp::transition {

namespace {

struct Fault {
    dev_t device = 0;
    ino_t file = 0;
    int64_t begin = 0;
    int64_t end = 0;
};

Fault fault;
std::atomic<bool> fault_is_set = false;
std::atomic<int> fault_count = 0;
std::atomic<bool> renames_are_poor = false;
std::atomic<bool> links_are_missing = false;

bool hits_fault(int file, size_t count) {
    struct stat state {};
    if (!fault_is_set || fstat(file, &state) != 0 || state.st_dev != fault.device || state.st_ino != fault.file)
        return false;
    const int64_t place = lseek(file, 0, SEEK_CUR);
    return place < fault.end && place + static_cast<int64_t>(count) > fault.begin;
}

}  // namespace

UnreadableBytes::UnreadableBytes(const std::filesystem::path& path, int64_t begin, int64_t end) {
    struct stat state {};
    if (stat(path.c_str(), &state) != 0)
        throw std::runtime_error("no such file: " + path.string());
    fault = {state.st_dev, state.st_ino, begin, end};
    fault_count = 0;
    fault_is_set = true;
}

UnreadableBytes::~UnreadableBytes() { fault_is_set = false; }

int UnreadableBytes::failures() const { return fault_count; }

PoorFileSystem::PoorFileSystem(bool has_links) {
    renames_are_poor = true;
    links_are_missing = !has_links;
}

PoorFileSystem::~PoorFileSystem() { renames_are_poor = links_are_missing = false; }

}  // namespace zepbmp::transition

using namespace zepbmp::transition;

extern "C" ssize_t read(int file, void* buffer, size_t count) {
    if (hits_fault(file, count)) {
        ++fault_count;
        errno = EIO;
        return -1;
    }
    return syscall(SYS_read, file, buffer, count);
}

extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to, unsigned flags) noexcept {
    if (renames_are_poor && flags != 0) {
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

extern "C" int link(const char* from, const char* to) noexcept {
    if (links_are_missing) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}
