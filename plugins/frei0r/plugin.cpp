/// \file
/// The frei0r interface of the effect that is linked beside it. Nothing here changes but instances, so that different
/// ones may work on different threads at the same time.
#include "plugin.h"

#include "frames.h"

namespace zepbmp::frei0r {

namespace {

constexpr unsigned kMostSide = 32768;  // pixels; of a texture that is larger, mapping would leave out the rest

int inputs_of(const Plugin& effect) { return effect.type == F0R_PLUGIN_TYPE_MIXER2 ? 2 : 1; }

/// F0R_PARAM_... of a value's alternatives, in their order.
constexpr int kTypes[] = {F0R_PARAM_DOUBLE, F0R_PARAM_BOOL, F0R_PARAM_COLOR, F0R_PARAM_POSITION};
static_assert(std::size(kTypes) == std::variant_size_v<Value>);

struct Instance {
    Instance(int width, int height)
        : frames(width, height, inputs_of(plugin)), effect(plugin.make(width, height)), values(plugin.parameters) {}

    bool ready() const { return frames.ready() && effect && effect->ready(); }

    void update(const uint32_t* first, const uint32_t* second, uint32_t* out) {
        const uint32_t* const given[] = {first, second};
        std::array<Bitmap, Frames::kMostInputs> in;
        const int count = inputs_of(plugin);
        for (int i = 0; i < count; ++i)
            in[i] = frames.input(i, given[i], out);
        Bitmap drawn = frames.output(out);
        effect->draw(drawn, {in.data(), static_cast<size_t>(count)}, values);
        frames.deliver(out);
    }

    Frames frames;
    std::unique_ptr<Effect> effect;
    Values values;
};

/// A parameter's place in the table; hosts may ask for any index.
bool is_parameter(int index) { return index >= 0 && static_cast<size_t>(index) < plugin.parameters.size(); }

}  // namespace

}  // namespace zepbmp::frei0r

using namespace zepbmp::frei0r;

int f0r_init(void) { return 1; }

void f0r_deinit(void) {}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    *info = {.name = plugin.name,
             .author = "zepbmp authors",
             .plugin_type = plugin.type,
             .color_model = F0R_COLOR_MODEL_RGBA8888,
             .frei0r_version = FREI0R_MAJOR_VERSION,
             .major_version = ZEPBMP_VERSION_MAJOR,
             .minor_version = ZEPBMP_VERSION_MINOR,
             .num_params = static_cast<int>(plugin.parameters.size()),
             .explanation = plugin.explanation};
}

void f0r_get_param_info(f0r_param_info_t* info, int param_index) {
    if (!info || !is_parameter(param_index))
        return;
    const Parameter& parameter = plugin.parameters[param_index];
    *info = {.name = parameter.name, .type = kTypes[parameter.initial.index()], .explanation = parameter.explanation};
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
    if (width < 1 || height < 1 || width > kMostSide || height > kMostSide)
        return nullptr;
    std::unique_ptr<Instance> instance(new (std::nothrow) Instance(static_cast<int>(width), static_cast<int>(height)));
    return instance && instance->ready() ? instance.release() : nullptr;
}

void f0r_destruct(f0r_instance_t instance) { delete static_cast<Instance*>(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param, int param_index) {
    if (instance && param && is_parameter(param_index))
        static_cast<Instance*>(instance)->values.set(static_cast<size_t>(param_index), param);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param, int param_index) {
    if (instance && param && is_parameter(param_index))
        static_cast<const Instance*>(instance)->values.get(static_cast<size_t>(param_index), param);
}

void f0r_update2(f0r_instance_t instance, double, const uint32_t* inframe1, const uint32_t* inframe2, const uint32_t*,
                 uint32_t* outframe) {
    if (instance && inframe1 && (inframe2 || inputs_of(plugin) == 1) && outframe)
        static_cast<Instance*>(instance)->update(inframe1, inframe2, outframe);
}

void f0r_update(f0r_instance_t instance, double time, const uint32_t* inframe, uint32_t* outframe) {
    f0r_update2(instance, time, inframe, nullptr, nullptr, outframe);
}
