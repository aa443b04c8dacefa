#include <cstring>

#include "subject.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
}

namespace zepbmp::bench {

namespace {

constexpr int kRate = 25;

void check(int result, const char* what) {
    if (result < 0)
        give_up(std::string("ffmpeg: ") + what);
}

struct DeleteFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::shared_ptr<AVFrame>;

Frame make_frame(Size size, unsigned seed) {
    const Frame frame(av_frame_alloc(), DeleteFrame());
    frame->width = size.width;
    frame->height = size.height;
    frame->format = AV_PIX_FMT_GBRAP;
    check(av_frame_get_buffer(frame.get(), kAlignment), "no memory for a frame");
    const Pixels pixels = make_picture(size, seed);
    for (int plane = 0; plane < 4; ++plane) {
        for (int y = 0; y < size.height; ++y)
            std::memcpy(frame->data[plane] + static_cast<ptrdiff_t>(y) * frame->linesize[plane],
                        reinterpret_cast<const uint8_t*>(pixels.get()) + static_cast<ptrdiff_t>(y) * size.width,
                        static_cast<size_t>(size.width));
    }
    return frame;
}

/// A graph of two inputs, the transition, and its end. It begins anew when a transition does.
struct Graph {
    Graph(Size size, const std::string& transition, int count) : graph(avfilter_graph_alloc()) {
        graph->nb_threads = 1;
        char source[200], filter[200];
        std::snprintf(source, sizeof source,
                      "video_size=%dx%d:pix_fmt=%d:time_base=1/%d:frame_rate=%d:pixel_aspect=1/1", size.width,
                      size.height, AV_PIX_FMT_GBRAP, kRate, kRate);
        std::snprintf(filter, sizeof filter, "transition=%s:duration=%f:offset=0", transition.c_str(),
                      static_cast<double>(count) / kRate);
        AVFilterContext* xfade = nullptr;
        const auto create = [&](AVFilterContext** context, const char* name, const char* arguments) {
            check(avfilter_graph_create_filter(context, avfilter_get_by_name(name), name, arguments, nullptr, graph),
                  name);
        };
        create(&inputs[0], "buffer", source);
        create(&inputs[1], "buffer", source);
        create(&xfade, "xfade", filter);
        create(&output, "buffersink", nullptr);
        check(avfilter_link(inputs[0], 0, xfade, 0), "link");
        check(avfilter_link(inputs[1], 0, xfade, 1), "link");
        check(avfilter_link(xfade, 0, output, 0), "link");
        check(avfilter_graph_config(graph, nullptr), "graph");
    }
    ~Graph() { avfilter_graph_free(&graph); }
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    AVFilterGraph* graph;
    AVFilterContext* inputs[2] = {};
    AVFilterContext* output = nullptr;
};

}  // namespace

Step xfade_step(Size size, const std::string& transition) {
    std::vector<Frame> frames;
    for (unsigned i = 0; i < 2 * kPictures; ++i)
        frames.push_back(make_frame(size, i));
    const Frame result(av_frame_alloc(), DeleteFrame());
    const auto graph = std::make_shared<std::unique_ptr<Graph>>();
    const auto next = std::make_shared<int64_t>(0);
    return [=](int index, int count) {
        if (index == 0 || !*graph) {
            *graph = std::make_unique<Graph>(size, transition, count);
            *next = 0;
        }
        // A frame comes out when the graph knows what follows: at the beginning that takes one frame more.
        for (;;) {
            const int got = av_buffersink_get_frame((*graph)->output, result.get());
            if (got >= 0)
                break;
            if (got != AVERROR(EAGAIN))
                check(got, "output");
            for (int i = 0; i < 2; ++i) {
                AVFrame* const frame = frames[static_cast<size_t>(2 * (*next % kPictures) + i)].get();
                frame->pts = *next;
                check(av_buffersrc_add_frame_flags((*graph)->inputs[i], frame, AV_BUFFERSRC_FLAG_KEEP_REF), "input");
            }
            ++*next;
        }
        av_frame_unref(result.get());
    };
}

}  // namespace zepbmp::bench
