// splinecore-demo: builds a Figure (the built-in one or a figure file),
// queries it as a host would in model and muscle mode, draws both side by
// side to PNG and SVG, and prints a table of lengths and points.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "render.h"
#include "scene.h"
#include "splinecore/figure_file.h"

namespace {

using namespace splinecore::demo;

struct Options {
  std::string out = "figure";
  int width = 1600, height = 800;
  bool muscle = false;
  bool tableOnly = false;
  std::string figurePath;
};

const char kUsage[] =
    "usage: splinecore-demo [--out PREFIX] [--size WxH] [--muscle] [--table-only] [FIGURE.json]\n"
    "  --out PREFIX   write PREFIX.png and PREFIX.svg (default: figure)\n"
    "  --size WxH     picture size in pixels, 64..8192 each (default: 1600x800)\n"
    "  --muscle       print the table measured in muscle mode (the picture shows both modes)\n"
    "  --table-only   print the table only, write no picture\n"
    "  FIGURE.json    a figure description (default: the built-in figure)\n";

bool ParseSize(const char* text, int* width, int* height) {
  char x = 0;
  char rest = 0;
  if (std::sscanf(text, "%d%c%d%c", width, &x, height, &rest) != 3 || x != 'x') return false;
  return *width >= 64 && *width <= 8192 && *height >= 64 && *height <= 8192;
}

// Returns 0 on success, else the exit status (after printing the reason).
int ParseOptions(int argc, char** argv, Options* o) {
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    const bool takesValue = std::strcmp(a, "--out") == 0 || std::strcmp(a, "--size") == 0;
    if (takesValue && i + 1 == argc) {
      std::fprintf(stderr, "splinecore-demo: %s needs a value\n%s", a, kUsage);
      return 2;
    }
    if (std::strcmp(a, "--out") == 0) {
      o->out = argv[++i];
    } else if (std::strcmp(a, "--size") == 0) {
      if (!ParseSize(argv[++i], &o->width, &o->height)) {
        std::fprintf(stderr, "splinecore-demo: bad size '%s' (expected WxH, 64..8192 each)\n", argv[i]);
        return 2;
      }
    } else if (std::strcmp(a, "--muscle") == 0) {
      o->muscle = true;
    } else if (std::strcmp(a, "--table-only") == 0) {
      o->tableOnly = true;
    } else if (std::strcmp(a, "--help") == 0 || std::strcmp(a, "-h") == 0) {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (a[0] != '-' && o->figurePath.empty()) {
      o->figurePath = a;
    } else {
      std::fprintf(stderr, "splinecore-demo: unexpected argument '%s'\n%s", a, kUsage);
      return 2;
    }
  }
  return 0;
}

std::optional<DemoFigure> LoadFigure(const std::string& path) {
  if (path.empty()) return BuiltinFigure();
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "%s: cannot read the file\n", path.c_str());
    return std::nullopt;
  }
  std::ostringstream text;
  text << in.rdbuf();
  try {
    return ReadDemoFigure(text.str());
  } catch (const splinecore::FigureFileError& e) {
    std::fprintf(stderr, "%s:%d: %s\n", path.c_str(), e.line(), e.reason().c_str());
    return std::nullopt;
  }
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (int status = ParseOptions(argc, argv, &options); status != 0) return status;
  std::optional<DemoFigure> figure = LoadFigure(options.figurePath);
  if (!figure) return 1;

  const DemoRun run = RunDemo(*figure);
  if (!options.tableOnly) {
    const std::filesystem::path prefix(options.out);
    if (prefix.has_parent_path()) {
      std::error_code ignored;
      std::filesystem::create_directories(prefix.parent_path(), ignored);
    }
    const std::string png = options.out + ".png", svg = options.out + ".svg";
    std::string error;
    if (!RenderFigure(run.model, run.muscle, options.width, options.height, png, svg, &error)) {
      std::fprintf(stderr, "splinecore-demo: %s\n", error.c_str());
      return 1;
    }
    std::printf("wrote %s and %s (%dx%d)\n\n", png.c_str(), svg.c_str(), options.width, options.height);
  }
  std::fputs(FormatTable(options.muscle ? run.muscle : run.model).c_str(), stdout);
  return 0;
}
