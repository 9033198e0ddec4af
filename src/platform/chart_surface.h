#pragma once
// A picture surface with a user scale that keeps what is drawn on it.
#include <cstdint>

namespace zel {

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

// Colour composition limits each component to 0..255, as the surface's colour function does.
constexpr Rgb rgb(int r, int g, int b) {
    auto clamp = [](int v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); };
    return Rgb{clamp(r), clamp(g), clamp(b)};
}

enum class LineStyle { solid, dotted };

class ChartSurface {
public:
    virtual ~ChartSurface() = default;
    // User coordinates of the upper left (x1, y1) and lower right (x2, y2) corners.
    virtual void set_scale(double x1, double y1, double x2, double y2) = 0;
    virtual void clear() = 0;
    virtual void set_line_style(LineStyle style) = 0;
    virtual void set_line_width(int pixels) = 0;
    virtual void set_fore_color(Rgb colour) = 0;
    virtual void line(double x1, double y1, double x2, double y2) = 0;
    virtual void line(double x1, double y1, double x2, double y2, Rgb colour) = 0;
    virtual void box(double x1, double y1, double x2, double y2, Rgb colour) = 0;
};

}  // namespace zel
