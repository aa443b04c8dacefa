#include "measure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <sstream>
#include <system_error>

#include "error.h"
#include "output_file.h"

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace zepbmp::transition {

namespace fs = std::filesystem;

namespace {

constexpr int64_t kPieces = 16;
constexpr int64_t kPieceBytes = 64 * 1024;
constexpr int kDigestBits = 256;
const char kTitle[] = "zepbmp-transition measures 1";

void describe(std::ostream& out, const fs::path& video, const VideoMeasure& measure) {
    out << "video " << fingerprint(video) << '\n';
    out << "length " << exact_text(measure.length_seconds) << '\n';
    out << "keyframes " << measure.keyframes.size() << '\n';
    for (const Keyframe& keyframe : measure.keyframes)
        out << keyframe.pts << ' ' << keyframe.dts << '\n';
}

/// One video's lines. False at the end of the file, and where they are not as they have to be.
bool read_description(std::istream& in, std::string& video, VideoMeasure& measure) {
    std::string word, length;
    size_t count = 0;
    if (!(in >> word >> video) || word != "video" || !(in >> word >> length) || word != "length" ||
        !(in >> word >> count) || word != "keyframes")
        return false;
    char* end = nullptr;
    measure.length_seconds = std::strtod(length.c_str(), &end);
    if (*end != '\0' || !std::isfinite(measure.length_seconds) || measure.length_seconds < 0)
        return false;
    measure.keyframes.clear();
    for (size_t i = 0; i < count; ++i) {
        Keyframe keyframe;
        if (!(in >> keyframe.pts >> keyframe.dts))
            return false;
        measure.keyframes.push_back(keyframe);
    }
    return true;
}

}  // namespace

std::string exact_text(double value) {
    char text[64];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

std::string fingerprint(const fs::path& path) {
    const auto unreadable = [&] { return Error(path.string() + ": cannot be read", kExitRefused); };
    std::error_code failed;
    const auto bytes = static_cast<int64_t>(fs::file_size(path, failed));
    std::ifstream file(path, std::ios::binary);
    if (failed || !file)
        throw unreadable();
    const std::unique_ptr<AVSHA, void (*)(void*)> sha(av_sha_alloc(), av_free);
    if (!sha)
        throw std::bad_alloc();
    av_sha_init(sha.get(), kDigestBits);
    std::vector<char> piece(kPieceBytes);
    const int64_t last = std::max<int64_t>(bytes - kPieceBytes, 0);
    for (int64_t i = 0; i < kPieces; ++i) {
        const int64_t begin = last / (kPieces - 1) * i + last % (kPieces - 1) * i / (kPieces - 1);
        const int64_t count = std::min(kPieceBytes, bytes - begin);
        if (!file.seekg(begin) || !file.read(piece.data(), count))
            throw unreadable();
        av_sha_update(sha.get(), reinterpret_cast<const uint8_t*>(piece.data()), static_cast<size_t>(count));
    }
    std::array<uint8_t, kDigestBits / 8> digest{};
    av_sha_final(sha.get(), digest.data());
    std::string text = std::to_string(bytes) + ":";
    for (uint8_t byte : digest) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text += pair;
    }
    return text;
}

void write_measures(const fs::path& place, bool overwrite, const fs::path& a, const VideoMeasure& measure_a,
                    const fs::path& b, const VideoMeasure& measure_b) {
    OutputFile file(place, overwrite);
    std::ofstream out(file.temporary_name());
    out << kTitle << '\n';
    describe(out, a, measure_a);
    describe(out, b, measure_b);
    out.close();
    if (!out)
        throw Error(place.string() + ": cannot be written");
    file.commit();
}

VideoMeasure read_measure(const fs::path& measures, const fs::path& video) {
    std::ifstream file(measures);
    std::string title, described;
    if (!file || !std::getline(file, title) || title != kTitle)
        throw Error(measures.string() + ": is not a file that --count --measures has written", kExitRefused);
    const std::string wanted = fingerprint(video);
    VideoMeasure measure;
    while (read_description(file, described, measure))
        if (described == wanted)
            return measure;
    throw Error(measures.string() + ": does not describe " + video.string() + " as it is", kExitRefused);
}

}  // namespace zepbmp::transition
