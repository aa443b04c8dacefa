/// \file
/// What is measured: an operation at one size, run by each kernel set and by others that do the same job.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "frames.h"

namespace zepbmp::bench {

using Call = std::function<void(const FrameSet&)>;

/// What a peer makes of its frames.
enum class Picture {
    kOther,       ///< something of its own
    kSame,        ///< from the subject's frames what the subject makes of them, within its own rounding
    kSemiPlanar,  ///< the same, but YUY2 stands as luma, then pairs of chroma
};

/// Somebody else who does the job.
struct Peer {
    std::string name;
    std::vector<FrameShape> frames;  ///< may differ from the subject's
    Call call;
    Picture picture = Picture::kOther;
};

/// memcpy or memset of a subject's number of bytes.
struct Yardstick : Peer {
    double reference_gigabytes;  ///< a second, on the machine that targets from memory are given for
};

/// What is within reach; 0 where nothing is asked. A target counts as met within 5 %.
struct Target {
    double mpixels = 0;       ///< with the widest registers; from memory: on the machine of reference_gigabytes
    double mpixels_avx2 = 0;  ///< the same with 32-byte registers
    double mpolygons = 0;     ///< with the widest registers
    double yardstick = 0;     ///< times the yardstick's byte rate
    double peer[2] = {};      ///< times the speed of the first peer and of the second
    bool scaled = true;       ///< rates from memory are taken to the machine of reference_gigabytes
};

struct Subject {
    std::string name;  ///< operation_format_weight/WIDTHxHEIGHT
    double pixels;     ///< destination pixels of a call
    double bytes;      ///< read and written by a call
    bool cached;       ///< every call gets the same frames
    std::vector<FrameShape> frames;
    size_t written = 1;   ///< how many of them, the first ones, `call` writes
    double polygons = 0;  ///< of a call, where they count
    Call call;
    /// The meaning of `call` at a processor level, one byte at a time; what each kernel set has to reproduce.
    std::function<void(const FrameSet&, int level)> model;
    Yardstick yardstick;
    std::vector<Peer> peers;
    Target target;
    bool compares_stores = false;  ///< runs the widest kernel set with each kind of store instead of every set
};

/// The subjects of a group, in the order of the report.
std::vector<Subject> compose_subjects();
std::vector<Subject> color_subjects();
std::vector<Subject> line_subjects();
std::vector<Subject> drawing_subjects();
std::vector<Subject> shape_subjects();
std::vector<Subject> polygon_subjects();
std::vector<Subject> rect_subjects();

/// Each kind of store over footprints from the second-level cache's size to many times it.
std::vector<Subject> store_subjects();

struct Size {
    int32_t width, height;
    bool cached;
};

inline std::string size_name(const char* operation, Size size) {
    return std::string(operation) + '/' + std::to_string(size.width) + 'x' + std::to_string(size.height);
}

}  // namespace zepbmp::bench
