#include "report.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>

namespace zepbmp::bench {
namespace {

constexpr double kMetWithin = 0.95;

/// The value below which `share` of the repetitions lie.
double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    const double at = share * static_cast<double>(values.size() - 1);
    const auto below = static_cast<size_t>(at);
    const size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (at - static_cast<double>(below)) * (values[above] - values[below]);
}

double median_seconds(const Row& row) { return quantile(row.seconds, 0.5); }

/// What the middle half of the repetitions covers, in percent of the median.
double spread_percent(const Row& row) {
    return 100 * (quantile(row.seconds, 0.75) - quantile(row.seconds, 0.25)) / median_seconds(row);
}

double mpixels(const Subject& subject, const Row& row) { return subject.pixels / median_seconds(row) * 1e-6; }
double mpolygons(const Subject& subject, const Row& row) { return subject.polygons / median_seconds(row) * 1e-6; }
double gigabytes(const Subject& subject, const Row& row) { return subject.bytes / median_seconds(row) * 1e-9; }

/// How many times as fast as `other`.
double times(const Row& row, const Row& other) { return median_seconds(other) / median_seconds(row); }

const Row* find(const Measured& measured, const std::function<bool(const Row&)>& wanted) {
    const auto row = std::find_if(measured.rows.begin(), measured.rows.end(), wanted);
    return row == measured.rows.end() ? nullptr : &*row;
}

const Row* of_kind(const Measured& measured, RowKind kind) {
    return find(measured, [=](const Row& row) { return row.kind == kind; });
}

std::vector<const Row*> peers(const Measured& measured) {
    std::vector<const Row*> rows;
    for (const Row& row : measured.rows) {
        if (row.kind == RowKind::kPeer)
            rows.push_back(&row);
    }
    return rows;
}

const Row* named(const Measured& measured, const char* name) {
    return find(measured, [=](const Row& row) { return row.name == name; });
}

/// The kernel set with the widest registers: what a host gets on this machine.
const Row& widest(const Measured& measured) {
    return *std::max_element(measured.rows.begin(), measured.rows.end(),
                             [](const Row& a, const Row& b) { return a.register_bytes < b.register_bytes; });
}

std::string number(const char* format, double value) {
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

void print_rows(std::FILE* out, const Measured& measured) {
    const Subject& subject = *measured.subject;
    std::vector<const Row*> others;  // what every row is compared with
    for (const Row& row : measured.rows) {
        if (row.kind != RowKind::kKernels || &row == &measured.rows.front())
            others.push_back(&row);
    }
    std::fprintf(out, "%s, %s: %.1f MB a call, %.3g bytes a pixel\n", subject.name.c_str(),
                 subject.cached ? "cached" : "from memory", subject.bytes * 1e-6, subject.bytes / subject.pixels);
    std::fprintf(out, "  %-10s%10s%9s%9s", "", "Mpixel/s", "GB/s", "spread");
    if (subject.polygons > 0)
        std::fprintf(out, "%11s", "Mpolygon/s");
    for (const Row* other : others)
        std::fprintf(out, "  /%-8s", other->name.c_str());
    std::fputc('\n', out);
    for (const Row& row : measured.rows) {
        std::fprintf(out, "  %-10s%10.0f%9.1f%7.1f %%", row.name.c_str(), mpixels(subject, row),
                     gigabytes(subject, row), spread_percent(row));
        if (subject.polygons > 0)
            std::fprintf(out, "%11.3f", mpolygons(subject, row));
        for (const Row* other : others)
            std::fprintf(out, "  %9.2f", times(row, *other));
        std::fputc('\n', out);
    }
    std::fputc('\n', out);
    std::fflush(out);
}

void print_likenesses(std::FILE* out, const Subject& subject, const std::vector<Likeness>& likenesses) {
    std::fprintf(out, "%s: every kernel set writes the model's bytes", subject.name.c_str());
    for (const Likeness& likeness : likenesses)
        std::fprintf(out, "; %s differs by %.3f on average, %.3f %% of it by more than %d", likeness.peer.c_str(),
                     likeness.mean_difference, 100 * likeness.share_beyond, kBeyond);
    std::fputc('\n', out);
    std::fflush(out);
}

void print_summary(std::FILE* out, const std::vector<Measured>& all) {
    std::fputs(
        "| Mpixel/s | bytes a pixel | plain | SSE2 | AVX2 | AVX-512 | GB/s | / plain | memcpy, memset GB/s | / that | "
        "peers (/ each) |\n|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|---|\n",
        out);
    for (const Measured& measured : all) {
        const Subject& subject = *measured.subject;
        const Row& best = widest(measured);
        const Row &plain = *named(measured, "plain"), &yardstick = *of_kind(measured, RowKind::kYardstick);
        std::string others;
        for (const Row* peer : peers(measured))
            others += (others.empty() ? "" : ", ") + peer->name + number(" %.0f", mpixels(subject, *peer)) +
                      number(" (%.2f)", times(best, *peer));
        std::fprintf(out, "| %s%s | %.3g |", subject.name.c_str(), subject.cached ? ", cached" : "",
                     subject.bytes / subject.pixels);
        for (const char* set : {"plain", "SSE2", "AVX2", "AVX-512"}) {
            const Row* const row = named(measured, set);
            std::fprintf(out, " %s |", row ? number("%.0f", mpixels(subject, *row)).c_str() : "");
        }
        std::fprintf(out, " %.1f | %.1f | %.1f | %.2f | %s |\n", gigabytes(subject, best), times(best, plain),
                     gigabytes(subject, yardstick), times(best, yardstick), others.c_str());
    }
}

void print_targets(std::FILE* out, const std::vector<Measured>& all) {
    std::fputs("| goal | set | reached | |\n|---|--:|--:|---|\n", out);
    const auto line = [out](const Subject& subject, const std::string& what, double asked, double reached) {
        std::fprintf(out, "| %s, %s | %.6g | %s | %s |\n", subject.name.c_str(), what.c_str(), asked,
                     number(asked >= 100 ? "%.0f" : "%.2f", reached).c_str(),
                     reached >= asked * kMetWithin ? "met" : "not met");
    };
    for (const Measured& measured : all) {
        const Subject& subject = *measured.subject;
        const Target& target = subject.target;
        const Row& best = widest(measured);
        const Row& yardstick = *of_kind(measured, RowKind::kYardstick);
        const Row* const avx2 = named(measured, "AVX2");
        if (target.yardstick > 0)
            line(subject, "times " + yardstick.name, target.yardstick, times(best, yardstick));
        const std::vector<const Row*> others = peers(measured);
        for (size_t i = 0; i < std::size(target.peer); ++i) {
            if (target.peer[i] > 0)
                line(subject, "times " + others.at(i)->name, target.peer[i], times(best, *others.at(i)));
        }
        const double reference = subject.yardstick.reference_gigabytes;
        const bool scaled = target.scaled && !subject.cached;
        const double scale = scaled ? reference / gigabytes(subject, yardstick) : 1;
        const std::string unit =
            " Mpixel/s" + (scaled ? " where " + yardstick.name + " moves " + number("%.0f GB/s", reference) : "");
        if (target.mpixels > 0)
            line(subject, best.name + unit, target.mpixels, scale * mpixels(subject, best));
        if (target.mpixels_avx2 > 0 && avx2)
            line(subject, "AVX2" + unit, target.mpixels_avx2, scale * mpixels(subject, *avx2));
        if (target.mpolygons > 0)
            line(subject, best.name + " Mpolygon/s", target.mpolygons, mpolygons(subject, best));
    }
}

void print_stores(std::FILE* out, const std::vector<Measured>& all) {
    std::fputs("| GB/s | through the caches | past them | past / through | memcpy, memset |\n|---|--:|--:|--:|--:|\n",
               out);
    for (const Measured& measured : all) {
        const Subject& subject = *measured.subject;
        const Row &cached = *named(measured, "cached"), &streamed = *named(measured, "streamed");
        std::fprintf(out, "| %s | %.1f | %.1f | %.2f | %.1f |\n", subject.name.c_str(), gigabytes(subject, cached),
                     gigabytes(subject, streamed), times(streamed, cached),
                     gigabytes(subject, *of_kind(measured, RowKind::kYardstick)));
    }
}

}  // namespace zepbmp::bench
