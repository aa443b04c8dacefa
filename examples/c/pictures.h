/* What the examples share: pictures to work on, and files to look at. Whatever goes wrong ends the program with a
 * message and status 1. */
#ifndef ZEPBMP_EXAMPLES_PICTURES_H
#define ZEPBMP_EXAMPLES_PICTURES_H

#include <stddef.h>
#include <stdint.h>

#include "zepbmp.h"

enum { kWidth = 320, kHeight = 180 };

/* The program's one argument: the file to write. */
const char* path_argument(int argc, char** argv);

/* bmp_create that never returns null. */
Bitmap* new_bitmap(int width, int height, int format, uint32_t flags);

/* RGBQ pictures of kWidth x kHeight with a pattern of squares: a bright one, a dark one. */
Bitmap* new_day(void);
Bitmap* new_night(void);

/* Writes an RGBQ bitmap as a PPM image. */
void save(const Bitmap* bitmap, const char* path);

#endif
