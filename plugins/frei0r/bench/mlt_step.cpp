#include <framework/mlt.h>

#include <cstring>

#include "subject.h"

namespace zepbmp::bench {

namespace {

mlt_profile profile_of(Size size) {
    mlt_profile profile = mlt_profile_init(nullptr);
    profile->width = size.width;
    profile->height = size.height;
    profile->frame_rate_num = 25;
    profile->frame_rate_den = 1;
    profile->sample_aspect_num = profile->sample_aspect_den = 1;
    profile->progressive = 1;
    return profile;
}

/// A frame that has its picture already. The frame does not own it.
mlt_frame frame_of(mlt_service service, uint32_t* pixels, mlt_image_format format, Size size, int position) {
    const mlt_frame frame = mlt_frame_init(service);
    const mlt_properties properties = MLT_FRAME_PROPERTIES(frame);
    mlt_frame_set_position(frame, position);
    mlt_frame_set_image(frame, reinterpret_cast<uint8_t*>(pixels), 0, nullptr);
    mlt_properties_set_int(properties, "format", format);
    mlt_properties_set_int(properties, "width", size.width);
    mlt_properties_set_int(properties, "height", size.height);
    mlt_properties_set_int(properties, "progressive", 1);
    mlt_properties_set_double(properties, "aspect_ratio", 1);
    return frame;
}

}  // namespace

Step mlt_step(Size size, const std::string& service, const std::map<std::string, std::string>& properties,
              const std::string& progress) {
    static const mlt_repository repository = mlt_factory_init(nullptr);
    if (!repository)
        give_up("MLT does not begin");
    const mlt_profile profile = profile_of(size);
    const mlt_transition transition = mlt_factory_transition(profile, service.c_str(), nullptr);
    if (!transition)
        give_up("MLT has no transition " + service);
    for (const auto& [name, value] : properties)
        mlt_properties_set(MLT_TRANSITION_PROPERTIES(transition), name.c_str(), value.c_str());
    const bool yuv = service == "luma";
    const mlt_image_format wanted = yuv ? mlt_image_yuv422 : mlt_image_rgba;
    std::vector<Pixels> pictures;
    for (unsigned i = 0; i < 2 * kPictures; ++i)
        pictures.push_back(make_picture(size, i));
    return [=](int index, int count) {
        mlt_transition_set_in_and_out(transition, 0, count - 1);
        const mlt_service owner = MLT_TRANSITION_SERVICE(transition);
        const size_t k = static_cast<size_t>(2 * (index % kPictures));
        const mlt_frame a = frame_of(owner, pictures[k].get(), wanted, size, index);
        const mlt_frame b = frame_of(owner, pictures[k + 1].get(), wanted, size, index);
        if (!progress.empty())
            mlt_properties_set_double(MLT_TRANSITION_PROPERTIES(transition), progress.c_str(), (index + 0.5) / count);
        mlt_transition_process(transition, a, b);
        uint8_t* image = nullptr;
        mlt_image_format format = wanted;
        int width = size.width, height = size.height;
        if (mlt_frame_get_image(a, &image, &format, &width, &height, 0) || format != wanted || width != size.width ||
            height != size.height)
            give_up("MLT: " + service + " gives no frame");
        mlt_frame_close(a);
        mlt_frame_close(b);
    };
}

}  // namespace zepbmp::bench
