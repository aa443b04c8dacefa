/// \file
/// zepbmp.hpp behind macros that Windows' headers define. A program that calls zepbmp::display has them.
#include <array>
#include <bit>
#include <charconv>
#include <compare>
#include <concepts>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define small char
#define near
#define far
#define interface struct
#define IN
#define OUT
#define CONST const
#define ERROR 0
#define RGB(r, g, b) ((r) | (g) << 8 | (b) << 16)

#include "zepbmp.hpp"
