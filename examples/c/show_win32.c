/* Shows three frames in a window: a wipe, a picture of palette colours, and an interlaced dissolve, which is further in
 * one field than in the other. Ends when the window is closed.
 *
 *   GNU         i686-w64-mingw32-gcc show_win32.c -Iinclude lib/libzepbmp.dll.a -lgdi32 -luser32 -o show.exe
 *   Microsoft   cl /Iinclude show_win32.c lib\zepbmp.lib gdi32.lib user32.lib /Fe:show.exe
 */
#include <windows.h>

#include <stdio.h>

#include "zepbmp.h"

enum { kWidth = 160, kHeight = 120, kGap = 16, kFrames = 3 };

static Bitmap* frames[kFrames];

/* ---------------------------------------------------------------- the frames */

static void set_pixel(Bitmap* bitmap, int x, int y, int red, int green, int blue) {
    uint8_t* pixel = bmp_pointer(bitmap, x, y);
    pixel[0] = (uint8_t)blue;
    pixel[1] = (uint8_t)green;
    pixel[2] = (uint8_t)red;
    pixel[3] = 0;
}

static void paint_day_and_night(Bitmap* day, Bitmap* night) {
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            set_pixel(day, x, y, 80 + x, 120 + y, 255 - y);
            set_pixel(night, x, y, 10 + x / 4, 20, 30 + y);
        }
    }
}

/* The night in a round hole of the day, with a soft edge of 24 pixels. */
static void draw_wipe(Bitmap* frame, const Bitmap* day, const Bitmap* night, Bitmap* weights) {
    bmp_alpha_circle(weights, kWidth / 2, kHeight / 2, 52, 24, 1, 0);
    bmp_compose(frame, day, night, weights, 0);
}

/* Palette entries from blue to yellow, the first one in the centre, entry 250 in the corners. */
static void draw_glow(Bitmap* frame) {
    for (int i = 0; i < 256; ++i)
        bmp_set_palette(frame, i, bmp_translate_color(NULL, RGB(i, i * i / 255, 255 - i)));
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const int dx = x - kWidth / 2, dy = y - kHeight / 2;
            *bmp_pointer(frame, x, y) = (uint8_t)((dx * dx + dy * dy) / 40);
        }
    }
}

/* The even lines have gone a quarter of the way from day to night, the odd ones three quarters. */
static void draw_dissolve(Bitmap* frame, const Bitmap* day, const Bitmap* night) {
    bmp_compose(frame, day, night, BMP_INTEGER(1024), BMP_COMPOSE_LEVEL | BMP_FIELD);
    bmp_compose(frame, day, night, BMP_INTEGER(3072), BMP_COMPOSE_LEVEL | BMP_FIELD | BMP_FIELD_ODD);
}

/* Returns 0 when memory is short. */
static int make_frames(void) {
    Bitmap* day = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    Bitmap* night = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    Bitmap* weights = bmp_create(kWidth, kHeight, BMP_FMT_PWRW, 0);
    int made;
    frames[0] = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 0);
    frames[1] = bmp_create(kWidth, kHeight, BMP_FMT_RGB8, 0);
    frames[2] = bmp_create(kWidth, kHeight, BMP_FMT_RGBQ, 2); /* interlaced, even field first */
    made = day && night && weights && frames[0] && frames[1] && frames[2];
    if (made) {
        paint_day_and_night(day, night);
        draw_wipe(frames[0], day, night, weights);
        draw_glow(frames[1]);
        draw_dissolve(frames[2], day, night);
    }
    bmp_destroy(weights);
    bmp_destroy(night);
    bmp_destroy(day);
    return made;
}

/* ---------------------------------------------------------------- the window */

static int fail(const char* what) {
    fprintf(stderr, "show: %s\n", what);
    return 1;
}

static void paint(HWND window) {
    PAINTSTRUCT painting;
    HDC dc = BeginPaint(window, &painting);
    for (int i = 0; dc && i < kFrames; ++i) {
        RECT place = {kGap + i * (kWidth + kGap), kGap, (i + 1) * (kWidth + kGap), kGap + kHeight};
        if (RectVisible(dc, &place) && !bmp_display(dc, place.left, place.top, kWidth, kHeight, frames[i], 0, 0))
            PostQuitMessage(fail("a frame cannot be drawn"));
    }
    EndPaint(window, &painting);
}

static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM w_param, LPARAM l_param) {
    switch (message) {
        case WM_PAINT: paint(window); return 0;
        case WM_DESTROY: PostQuitMessage(0); return 0;
        default: return DefWindowProcA(window, message, w_param, l_param);
    }
}

static HWND open_window(void) {
    const DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    RECT frame = {0, 0, kGap + kFrames * (kWidth + kGap), kGap + kHeight + kGap};
    WNDCLASSA window_class = {0};
    window_class.lpfnWndProc = window_procedure;
    window_class.hInstance = GetModuleHandleA(NULL);
    window_class.hCursor = LoadCursor(NULL, IDC_ARROW);
    window_class.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    window_class.lpszClassName = "zepbmp show";
    if (!RegisterClassA(&window_class) || !AdjustWindowRect(&frame, style, FALSE))
        return NULL;
    return CreateWindowA(window_class.lpszClassName, "zepbmp", style | WS_VISIBLE, CW_USEDEFAULT, CW_USEDEFAULT,
                         frame.right - frame.left, frame.bottom - frame.top, NULL, NULL, window_class.hInstance, NULL);
}

int main(void) {
    int status;
    if (!make_frames()) {
        status = fail("out of memory");
    } else if (!open_window()) {
        status = fail("the window does not open");
    } else {
        MSG message;
        while (GetMessageA(&message, NULL, 0, 0) > 0)
            DispatchMessageA(&message);
        status = (int)message.wParam;
    }
    for (int i = 0; i < kFrames; ++i)
        bmp_destroy(frames[i]);
    return status;
}
