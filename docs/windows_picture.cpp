// Draws the three windows as the library evaluates them, so that their phases are seen at a glance:
// windows_picture >docs/images/windows.svg
#include <sarnum/sarnum.h>

#include <array>
#include <cstdio>

namespace {

constexpr int n = 128;

// The plot within the picture, in pixels.
constexpr double left = 60.0, top = 20.0, width = 520.0, height = 300.0;

double x_of(int i) {
  return left + width * i / n;
}

double y_of(double weight) {
  return top + height * (1.0 - weight / 2.0);
}

struct Window {
  const char* name;
  const char* color;
  const char* dashes;
  double (*weight)(int i);
};

// Told apart by their dashes where colours are not.
constexpr std::array<Window, 3> windows = {{
    {"Hanning(i, n)", "#0072b2", "none", [](int i) { return Hanning(i, n); }},
    {"Hamming(0.54, i, n)", "#d55e00", "8 4", [](int i) { return Hamming(0.54, i, n); }},
    {"Kaiser(6, i, n)", "#007a5a", "2 3", [](int i) { return Kaiser(6.0, i, n); }},
}};

void draw_axes() {
  constexpr std::array ticks = {"0", "n/4", "n/2", "3n/4", "n"};
  for (int t = 0; t <= 4; ++t) {
    const double x = x_of(n / 4 * t), y = y_of(0.5 * t);
    std::printf("<path d=\"M%g %gV%gM%g %gH%g\" stroke=\"#ddd\"/>\n", x, top, top + height, left, y,
                left + width);
    std::printf("<text x=\"%g\" y=\"%g\" text-anchor=\"middle\">%s</text>\n", x,
                top + height + 18.0, ticks[static_cast<std::size_t>(t)]);
    std::printf("<text x=\"%g\" y=\"%g\" text-anchor=\"end\">%g</text>\n", left - 8.0, y + 4.0,
                0.5 * t);
  }
  std::printf(
      "<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"none\" stroke=\"#333\"/>\n", left,
      top, width, height);
  std::printf("<text x=\"%g\" y=\"%g\" text-anchor=\"middle\">sample i</text>\n", x_of(n / 2),
              top + height + 38.0);
  std::printf(
      "<text transform=\"translate(18 %g) rotate(-90)\" text-anchor=\"middle\">"
      "weight</text>\n",
      y_of(1.0));
}

void draw(const Window& window, double legend_y) {
  const auto style = [&] {
    std::printf("\" fill=\"none\" stroke=\"%s\" stroke-width=\"2\" stroke-dasharray=\"%s\"/>\n",
                window.color, window.dashes);
  };
  std::printf("<path d=\"");
  for (int i = 0; i <= n; ++i) {
    std::printf("%c%.1f %.1f", i == 0 ? 'M' : 'L', x_of(i), y_of(window.weight(i)));
  }
  style();
  std::printf("<path d=\"M%g %gh34", left + width + 14.0, legend_y);
  style();
  std::printf("<text x=\"%g\" y=\"%g\">%s</text>\n", left + width + 54.0, legend_y + 4.0,
              window.name);
}

}  // namespace

int main() {
  std::printf(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 790 370\" width=\"790\" "
      "height=\"370\" font-family=\"sans-serif\" font-size=\"13\" fill=\"#222\">\n"
      "<title>Weights of Hanning, Hamming and Kaiser over the samples 0 to n</title>\n"
      "<rect width=\"790\" height=\"370\" fill=\"#fff\"/>\n");
  draw_axes();
  double legend_y = top + 20.0;
  for (const Window& window : windows) {
    draw(window, legend_y);
    legend_y += 24.0;
  }
  std::printf("</svg>\n");
}
