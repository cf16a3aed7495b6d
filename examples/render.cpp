#include "render.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>

#include "splinecore/measure.h"

namespace splinecore::demo {

namespace {

struct Rgb {
  double r, g, b;
};

const Rgb kPalette[] = {{0.12, 0.38, 0.70}, {0.10, 0.55, 0.35}, {0.35, 0.35, 0.40}, {0.35, 0.35, 0.40},
                        {0.55, 0.25, 0.65}, {0.55, 0.25, 0.65}, {0.55, 0.25, 0.65}, {0.80, 0.20, 0.25},
                        {0.15, 0.60, 0.70}};
const Rgb kHook{0.93, 0.55, 0.05};
const Rgb kPiece[] = {{1.0, 0.65, 0.10}, {0.95, 0.35, 0.45}};

Rgb SplineColour(std::size_t i) { return kPalette[i % (sizeof kPalette / sizeof kPalette[0])]; }

// Screen space -> pixels of one panel: a shared fit for both panels, so the
// two modes are drawn at the same scale.
struct Fit {
  double minX, minY, k, ox, oy;
  void Map(const Vector& v, double* x, double* y) const {
    *x = ox + (v.x - minX) * k;
    *y = oy + (v.y - minY) * k;
  }
};

void Grow(const Vector& v, double box[4]) {
  box[0] = std::min(box[0], double(v.x));
  box[1] = std::min(box[1], double(v.y));
  box[2] = std::max(box[2], double(v.x));
  box[3] = std::max(box[3], double(v.y));
}

void Bounds(const Scene& scene, double box[4]) {
  for (const SplineView& s : scene.splines)
    for (const Bezier& b : s.curve) {
      Grow(b.p0, box), Grow(b.h0, box), Grow(b.h1, box), Grow(b.p1, box);
    }
  for (const LengthMarker& m : scene.markers) Grow(m.screen, box);
}

class Painter {
 public:
  Painter(cairo_t* cr, const Fit& fit, double ui) : cr_(cr), fit_(fit), ui_(ui) {}

  void Colour(const Rgb& c, double alpha = 1.0) { cairo_set_source_rgba(cr_, c.r, c.g, c.b, alpha); }

  void Curve(const Bezier& b, double width) {
    double x0, y0, x1, y1, x2, y2, x3, y3;
    fit_.Map(b.p0, &x0, &y0), fit_.Map(b.h0, &x1, &y1), fit_.Map(b.h1, &x2, &y2), fit_.Map(b.p1, &x3, &y3);
    cairo_move_to(cr_, x0, y0);
    cairo_curve_to(cr_, x1, y1, x2, y2, x3, y3);
    cairo_set_line_width(cr_, width * ui_);
    cairo_stroke(cr_);
  }

  // An SVG path of M, C and Z commands in screen space (Figure::SvgPath).
  void Path(const std::string& d, double width) {
    std::istringstream in(d);
    std::string command;
    cairo_new_path(cr_);
    while (in >> command) {
      if (command == "Z") {
        cairo_close_path(cr_);
        continue;
      }
      double xy[6];
      const int n = command == "C" ? 3 : 1;
      for (int k = 0; k < n; ++k) {
        float x = 0, y = 0;
        in >> x >> y;
        fit_.Map(Vector(x, y, 0), &xy[2 * k], &xy[2 * k + 1]);
      }
      if (command == "M") cairo_move_to(cr_, xy[0], xy[1]);
      else cairo_curve_to(cr_, xy[0], xy[1], xy[2], xy[3], xy[4], xy[5]);
    }
    cairo_set_line_width(cr_, width * ui_);
    cairo_stroke(cr_);
  }

  void Line(const Vector& a, const Vector& b, double width) {
    double x0, y0, x1, y1;
    fit_.Map(a, &x0, &y0), fit_.Map(b, &x1, &y1);
    cairo_move_to(cr_, x0, y0);
    cairo_line_to(cr_, x1, y1);
    cairo_set_line_width(cr_, width * ui_);
    cairo_stroke(cr_);
  }

  void Mark(const Vector& v, char shape, double size, bool fill) {
    double x, y;
    fit_.Map(v, &x, &y);
    const double r = size * ui_;
    cairo_new_path(cr_);
    if (shape == 'o') {
      cairo_arc(cr_, x, y, r, 0, 2 * M_PI);
    } else if (shape == 's') {
      cairo_rectangle(cr_, x - r, y - r, 2 * r, 2 * r);
    } else {  // triangle
      cairo_move_to(cr_, x, y - 1.2 * r);
      cairo_line_to(cr_, x + r, y + 0.7 * r);
      cairo_line_to(cr_, x - r, y + 0.7 * r);
      cairo_close_path(cr_);
    }
    cairo_set_line_width(cr_, 1.3 * ui_);
    if (fill) cairo_fill(cr_);
    else cairo_stroke(cr_);
  }

  // A tick of `length` pixels from v along the screen direction d.
  void Tick(const Vector& v, const Vector& d, double length) {
    const double n = std::hypot(double(d.x), double(d.y));
    if (n == 0) return;
    double x, y;
    fit_.Map(v, &x, &y);
    cairo_move_to(cr_, x, y);
    cairo_line_to(cr_, x + d.x / n * length * ui_, y + d.y / n * length * ui_);
    cairo_set_line_width(cr_, 1.8 * ui_);
    cairo_stroke(cr_);
  }

  void Text(const Vector& v, double dx, double dy, const char* text, double size) {
    double x, y;
    fit_.Map(v, &x, &y);
    TextAt(x + dx * ui_, y + dy * ui_, text, size);
  }

  void TextAt(double x, double y, const char* text, double size) {
    cairo_set_font_size(cr_, size * ui_);
    cairo_move_to(cr_, x, y);
    cairo_show_text(cr_, text);
  }

 private:
  cairo_t* cr_;
  Fit fit_;
  double ui_;
};

void DrawPanel(cairo_t* cr, const Scene& scene, const Scene* reference, const Fit& fit, double ui) {
  Painter p(cr, fit, ui);
  // Hook pieces underneath: the carrier segments cut at their hooks.
  int piece = 0;
  for (const Bezier& b : scene.hookPieces) {
    p.Colour(kPiece[piece++ % 2], 0.45);
    p.Curve(b, 9);
  }
  // Handles that the drawn segments use: a point's in-handle when it owns a
  // segment, its out-handle when it ends one.
  for (const SplineView& s : scene.splines)
    for (std::size_t j = 0; j < s.cps.size(); ++j) {
      const PointView& c = s.cps[j];
      const bool owns = s.closed || j + 1 < s.cps.size(), ends = s.closed || j > 0;
      p.Colour(Rgb{0.55, 0.55, 0.55});
      for (const Vector* h : {owns ? &c.in : nullptr, ends ? &c.out : nullptr}) {
        if (h == nullptr || *h == c.screen) continue;
        p.Line(c.screen, *h, 0.9);
        p.Mark(*h, 's', 2.2, false);
      }
    }
  // Curves.
  for (std::size_t i = 0; i < scene.splines.size(); ++i) {
    p.Colour(SplineColour(i));
    p.Path(scene.splines[i].path, 2.2);
  }
  // Where muscle mode moved a point from: a dashed ring at its model position.
  if (reference != nullptr) {
    for (std::size_t i = 0; i < scene.splines.size() && i < reference->splines.size(); ++i)
      for (std::size_t j = 0; j < scene.splines[i].cps.size(); ++j) {
        const PointView& now = scene.splines[i].cps[j];
        if (!now.moved) continue;
        const Vector& was = reference->splines[i].cps[j].screen;
        const double dash = 3 * ui;
        cairo_set_dash(cr, &dash, 1, 0);
        p.Colour(Rgb{0.85, 0.1, 0.1});
        p.Mark(was, 'o', 9, false);
        p.Line(was, now.screen, 1.2);
        cairo_set_dash(cr, nullptr, 0, 0);
      }
  }
  // Control points: circles smooth, squares peaked, triangles hooks; a ring
  // marks the head of a stack.
  for (std::size_t i = 0; i < scene.splines.size(); ++i)
    for (const PointView& c : scene.splines[i].cps) {
      if (c.hook) {
        p.Colour(kHook);
        p.Mark(c.screen, 't', 5.5, true);
        continue;
      }
      p.Colour(SplineColour(i));
      p.Mark(c.screen, c.smooth ? 'o' : 's', 3.6, true);
      if (c.stackHead) {
        p.Colour(Rgb{0.1, 0.1, 0.1});
        p.Mark(c.screen, 'o', 8, false);
      }
      if (c.moved) {
        p.Colour(Rgb{0.85, 0.1, 0.1});
        p.Mark(c.screen, 'o', 11, false);
      }
    }
  // Length markers with their direction ticks, numbered.
  char label[16];
  int k = 0;
  for (const LengthMarker& m : scene.markers) {
    p.Colour(Rgb{0, 0, 0});
    p.Mark(m.screen, 'o', 2.8, true);
    p.Tick(m.screen, m.screenDir, 18);
    std::snprintf(label, sizeof label, "%d", k++);
    p.Colour(Rgb{0.2, 0.2, 0.2});
    p.Text(m.screen, 5, 13, label, 10);
  }
  // Spline names beside the middle of their first segment.
  for (std::size_t i = 0; i < scene.splines.size(); ++i) {
    if (scene.splines[i].curve.empty()) continue;
    Bezier b = scene.splines[i].curve.front();
    Vector mid;
    CalcPoint(b.p0, b.h0, b.h1, b.p1, 0.5f, mid);
    p.Colour(SplineColour(i));
    p.Text(mid, 6, -6, scene.splines[i].name.c_str(), 12);
  }
}

void DrawLegend(cairo_t* cr, double x, double y, double ui) {
  struct Item {
    char shape;
    Rgb colour;
    const char* text;
  };
  const Item items[] = {{'o', {0.12, 0.38, 0.70}, "smooth point"},  {'s', {0.12, 0.38, 0.70}, "peaked point"},
                        {'t', kHook, "hook"},                         {'O', {0.1, 0.1, 0.1}, "stack head"},
                        {'h', {0.55, 0.55, 0.55}, "handle point"},    {'p', kPiece[0], "hook pieces"},
                        {'m', {0, 0, 0}, "length step, tick: direction"},
                        {'M', {0.85, 0.1, 0.1}, "muscle effect"}};
  cairo_set_font_size(cr, 11 * ui);
  const double r = 3.6 * ui;
  for (const Item& item : items) {
    cairo_set_source_rgba(cr, item.colour.r, item.colour.g, item.colour.b, item.shape == 'p' ? 0.6 : 1.0);
    cairo_new_path(cr);
    cairo_set_line_width(cr, 1.3 * ui);
    switch (item.shape) {
      case 'o': cairo_arc(cr, x, y, r, 0, 2 * M_PI), cairo_fill(cr); break;
      case 's': cairo_rectangle(cr, x - r, y - r, 2 * r, 2 * r), cairo_fill(cr); break;
      case 't':
        cairo_move_to(cr, x, y - 1.4 * r), cairo_line_to(cr, x + 1.2 * r, y + 0.8 * r);
        cairo_line_to(cr, x - 1.2 * r, y + 0.8 * r), cairo_close_path(cr), cairo_fill(cr);
        break;
      case 'O': cairo_arc(cr, x, y, 2 * r, 0, 2 * M_PI), cairo_stroke(cr); break;
      case 'M': cairo_arc(cr, x, y, 2.4 * r, 0, 2 * M_PI), cairo_stroke(cr); break;
      case 'h': cairo_rectangle(cr, x - 0.6 * r, y - 0.6 * r, 1.2 * r, 1.2 * r), cairo_stroke(cr); break;
      case 'p':
        cairo_set_line_width(cr, 8 * ui), cairo_move_to(cr, x - 2 * r, y), cairo_line_to(cr, x + 2 * r, y);
        cairo_stroke(cr);
        break;
      default:
        cairo_arc(cr, x, y, 0.7 * r, 0, 2 * M_PI), cairo_fill(cr);
        cairo_set_line_width(cr, 1.8 * ui), cairo_move_to(cr, x, y), cairo_line_to(cr, x + 4 * r, y - 2 * r);
        cairo_stroke(cr);
        break;
    }
    cairo_set_source_rgb(cr, 0.15, 0.15, 0.15);
    const double gap = (item.shape == 'p' || item.shape == 'm') ? 5.5 * r : 3.2 * r;
    cairo_move_to(cr, x + gap, y + 4 * ui);
    cairo_show_text(cr, item.text);
    cairo_text_extents_t extents;
    cairo_text_extents(cr, item.text, &extents);
    x += gap + extents.x_advance + 4.5 * r;
  }
}

void Draw(cairo_t* cr, const Scene& model, const Scene& muscle, int width, int height) {
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);

  const double ui = std::max(0.5, std::min(width / 1600.0, height / 800.0) * 1.6);
  const double title = 34 * ui, legend = 30 * ui, margin = 24 * ui;
  const double panelW = width / 2.0, panelH = height - title - legend;
  double box[4] = {1e30, 1e30, -1e30, -1e30};
  Bounds(model, box);
  Bounds(muscle, box);
  const double bw = std::max(box[2] - box[0], 1e-6), bh = std::max(box[3] - box[1], 1e-6);
  const double k = std::max(1e-6, std::min((panelW - 2 * margin) / bw, (panelH - 2 * margin) / bh));
  const double padX = (panelW - bw * k) / 2, padY = (panelH - bh * k) / 2;

  const Scene* scenes[2] = {&model, &muscle};
  const char* titles[2] = {"model mode", "muscle mode"};
  for (int i = 0; i < 2; ++i) {
    const Fit fit{box[0], box[1], k, i * panelW + padX, title + padY};
    DrawPanel(cr, *scenes[i], i == 1 ? &model : nullptr, fit, ui);
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
    cairo_set_font_size(cr, 18 * ui);
    cairo_move_to(cr, i * panelW + margin, 24 * ui);
    cairo_show_text(cr, titles[i]);
  }
  cairo_set_source_rgb(cr, 0.75, 0.75, 0.75);
  cairo_set_line_width(cr, 1);
  cairo_move_to(cr, panelW, title * 0.5);
  cairo_line_to(cr, panelW, height - legend);
  cairo_stroke(cr);
  DrawLegend(cr, margin, height - legend * 0.5, ui);
}

}  // namespace

bool RenderFigure(const Scene& model, const Scene& muscle, int width, int height, const std::string& pngPath,
                  const std::string& svgPath, std::string* error) {
  cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
  cairo_t* cr = cairo_create(image);
  Draw(cr, model, muscle, width, height);
  cairo_destroy(cr);
  const cairo_status_t png = cairo_surface_write_to_png(image, pngPath.c_str());
  cairo_surface_destroy(image);
  if (png != CAIRO_STATUS_SUCCESS) {
    *error = "cannot write " + pngPath + ": " + cairo_status_to_string(png);
    return false;
  }
  cairo_surface_t* svg = cairo_svg_surface_create(svgPath.c_str(), width, height);
  cr = cairo_create(svg);
  Draw(cr, model, muscle, width, height);
  cairo_destroy(cr);
  cairo_surface_finish(svg);
  const cairo_status_t status = cairo_surface_status(svg);
  cairo_surface_destroy(svg);
  // Drop cairo's font caches, so leak checkers see only what is ours.
  cairo_debug_reset_static_data();
  if (status != CAIRO_STATUS_SUCCESS) {
    *error = "cannot write " + svgPath + ": " + cairo_status_to_string(status);
    return false;
  }
  return true;
}

}  // namespace splinecore::demo
