#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

constexpr double kFlagIsSet = 0.5;  // frei0r hands flags over as numbers

uint32_t to_byte(float part) { return static_cast<uint32_t>(part * 255.0 + 0.5); }

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace

Values::Values(std::span<const Parameter> parameters) : parameters_(parameters) {
    for (size_t i = 0; i < parameters.size(); ++i)
        values_[i] = parameters[i].initial;
}

void Values::set(size_t index, const void* host_value) {
    const auto held = [&](double value) {
        return std::clamp(value, parameters_[index].least, parameters_[index].most);
    };
    const auto held_part = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
    const auto replace = [&]<class T>(T& value, const std::type_identity_t<T>& given) {
        if (std::memcmp(&value, &given, sizeof value) != 0) {
            value = given;
            ++version_;
        }
    };
    const Overloaded store = {[&](double& value) {
                                  const double given = *static_cast<const f0r_param_double*>(host_value);
                                  if (!std::isnan(given))
                                      replace(value, held(given));
                              },
                              [&](bool& value) {
                                  const double given = *static_cast<const f0r_param_bool*>(host_value);
                                  if (!std::isnan(given))
                                      replace(value, given >= kFlagIsSet);
                              },
                              [&](f0r_param_color_t& value) {
                                  const auto& given = *static_cast<const f0r_param_color_t*>(host_value);
                                  if (!std::isnan(given.r) && !std::isnan(given.g) && !std::isnan(given.b))
                                      replace(value, {held_part(given.r), held_part(given.g), held_part(given.b)});
                              },
                              [&](f0r_param_position_t& value) {
                                  const auto& given = *static_cast<const f0r_param_position_t*>(host_value);
                                  if (!std::isnan(given.x) && !std::isnan(given.y))
                                      replace(value, {held(given.x), held(given.y)});
                              }};
    std::visit(store, values_[index]);
}

void Values::get(size_t index, void* host_value) const {
    const Overloaded fetch = {
        [&](double value) { *static_cast<f0r_param_double*>(host_value) = value; },
        [&](bool value) { *static_cast<f0r_param_bool*>(host_value) = value ? 1 : 0; },
        [&](const f0r_param_color_t& value) { *static_cast<f0r_param_color_t*>(host_value) = value; },
        [&](const f0r_param_position_t& value) { *static_cast<f0r_param_position_t*>(host_value) = value; }};
    std::visit(fetch, values_[index]);
}

uint32_t Values::color(size_t index) const {
    const auto& color = *std::get_if<f0r_param_color_t>(&values_[index]);
    return to_byte(color.r) | to_byte(color.g) << 8 | to_byte(color.b) << 16 | 0xff000000u;
}

double Values::moved(size_t index, double otherwise) const {
    return number(index) != *std::get_if<double>(&parameters_[index].initial) ? number(index) : otherwise;
}

f0r_param_position_t Values::point(size_t position, size_t across) const {
    const auto& given = *std::get_if<f0r_param_position_t>(&values_[position]);
    return {moved(across, given.x), moved(across + 1, given.y)};
}

}  // namespace zepbmp::frei0r
