#include "figure_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <new>
#include <set>
#include <vector>

#include <nlohmann/json.hpp>

namespace splinecore::demo {

namespace {

using json = nlohmann::json;

constexpr int kMaxDepth = 32;
constexpr std::size_t kMaxSplines = 256;
constexpr std::size_t kMaxPoints = 4000;  // below the muscle table's slots
constexpr double kMaxCoordinate = 1e6;

// A reader error at a JSON location ("/splines/0/points/2"), turned into a
// line by the caller.
struct Failure {
  std::string path;
  std::string reason;
};

[[noreturn]] void Fail(const std::string& path, const std::string& reason) { throw Failure{path, reason}; }

int LineAtByte(std::string_view text, std::size_t byte) {
  int line = 1;
  for (std::size_t i = 0; i < byte && i < text.size(); ++i) line += text[i] == '\n';
  return line;
}

// Deepest nesting of [ and { outside strings; the text need not be valid.
int NestingDepth(std::string_view text) {
  int depth = 0, deepest = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\') ++i;
      else if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      deepest = std::max(deepest, ++depth);
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return deepest;
}

// The line on which each value of a valid JSON text starts, by JSON pointer.
class LineIndex {
 public:
  explicit LineIndex(std::string_view text) : text_(text) { Value(""); }

  // The line of `path`, or of its nearest recorded ancestor.
  int Line(std::string path) const {
    for (;;) {
      auto it = lines_.find(path);
      if (it != lines_.end()) return it->second;
      const std::size_t slash = path.rfind('/');
      if (slash == std::string::npos) return 0;
      path.resize(slash);
    }
  }

 private:
  void Skip() {
    while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t' || text_[pos_] == '\n' ||
                                   text_[pos_] == '\r')) {
      line_ += text_[pos_] == '\n';
      ++pos_;
    }
  }

  std::string String() {
    std::string s;
    for (++pos_; pos_ < text_.size() && text_[pos_] != '"'; ++pos_) {
      if (text_[pos_] == '\\') ++pos_;
      if (pos_ < text_.size()) s += text_[pos_];
    }
    ++pos_;
    return s;
  }

  void Value(const std::string& path) {
    Skip();
    if (pos_ >= text_.size()) return;
    lines_.emplace(path, line_);
    const char c = text_[pos_];
    if (c == '{' || c == '[') {
      ++pos_;
      for (int index = 0;; ++index) {
        Skip();
        if (pos_ >= text_.size() || text_[pos_] == '}' || text_[pos_] == ']') break;
        std::string key = std::to_string(index);
        if (c == '{') {
          key = String();
          Skip();
          ++pos_;  // ':'
        }
        Value(path + "/" + key);
        Skip();
        if (pos_ < text_.size() && text_[pos_] == ',') ++pos_;
      }
      ++pos_;
    } else if (c == '"') {
      String();
    } else {
      while (pos_ < text_.size() && text_[pos_] != ',' && text_[pos_] != '}' && text_[pos_] != ']' &&
             text_[pos_] != ' ' && text_[pos_] != '\n' && text_[pos_] != '\t' && text_[pos_] != '\r')
        ++pos_;
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  int line_ = 1;
  std::map<std::string, int> lines_;
};

// --- The description, checked, before anything is built ------------------

struct PointSpec {
  std::string path;
  Vector at{0, 0, 0};
  bool smooth = true;
  bool hook = false;
  float s = 0;
  Delta in = kNoDelta, out = kNoDelta;
};

struct SplineSpec {
  std::string name;
  bool closed = false;
  std::vector<PointSpec> points;
};

struct Ref {
  std::size_t spline, point;
};

struct MuscleSpec {
  std::string path;
  Ref point;
  Vector move;
};

struct FigureSpec {
  float rotate = 0, scale = 1, tx = 0, ty = 0;
  std::vector<SplineSpec> splines;
  std::vector<std::vector<Ref>> stacks;
  std::vector<std::string> stackPaths;
  std::vector<MuscleSpec> muscle;
  std::size_t measured = 0;
};

void OnlyKeys(const json& object, const std::string& path, std::initializer_list<const char*> keys) {
  for (auto it = object.begin(); it != object.end(); ++it) {
    bool known = false;
    for (const char* key : keys) known = known || it.key() == key;
    if (!known) Fail(path + "/" + it.key(), "unknown key '" + it.key() + "'");
  }
}

const json& Object(const json& v, const std::string& path, const char* what) {
  if (!v.is_object()) Fail(path, std::string(what) + " must be an object");
  return v;
}

float Number(const json& v, const std::string& path, const char* what, double limit = kMaxCoordinate) {
  if (!v.is_number()) Fail(path, std::string(what) + " must be a number");
  const double d = v.get<double>();
  if (!std::isfinite(d) || std::fabs(d) > limit) {
    char text[64];
    std::snprintf(text, sizeof text, " must be finite and within +-%g", limit);
    Fail(path, what + std::string(text));
  }
  return static_cast<float>(d);
}

// [x, y] or [x, y, z].
Vector Point(const json& v, const std::string& path, const char* what) {
  if (!v.is_array() || v.size() < 2 || v.size() > 3)
    Fail(path, std::string(what) + " must be an array of 2 or 3 numbers");
  return Vector(Number(v[0], path + "/0", what), Number(v[1], path + "/1", what),
                v.size() == 3 ? Number(v[2], path + "/2", what) : 0.0f);
}

Delta ReadDelta(const json& v, const std::string& path) {
  if (!v.is_array() || v.size() != 3) Fail(path, "a delta must be [pitch, yaw, magnitude]");
  return Delta{Number(v[0], path + "/0", "pitch"), Number(v[1], path + "/1", "yaw"),
               Number(v[2], path + "/2", "magnitude")};
}

PointSpec ReadPoint(const json& v, const std::string& path) {
  Object(v, path, "a point");
  OnlyKeys(v, path, {"at", "smooth", "hook", "in", "out"});
  PointSpec p;
  p.path = path;
  if (v.contains("hook")) {
    p.hook = true;
    p.s = Number(v["hook"], path + "/hook", "hook parameter", 1.0);
    if (p.s <= 0 || p.s >= 1) Fail(path + "/hook", "hook parameter must lie strictly between 0 and 1");
  } else if (!v.contains("at")) {
    Fail(path, "a point needs \"at\" (or \"hook\")");
  }
  if (v.contains("at")) p.at = Point(v["at"], path + "/at", "\"at\"");
  if (v.contains("smooth")) {
    if (!v["smooth"].is_boolean()) Fail(path + "/smooth", "\"smooth\" must be true or false");
    p.smooth = v["smooth"].get<bool>();
  }
  if (v.contains("in")) p.in = ReadDelta(v["in"], path + "/in");
  if (v.contains("out")) p.out = ReadDelta(v["out"], path + "/out");
  return p;
}

class SpecReader {
 public:
  FigureSpec Read(const json& doc) {
    Object(doc, "", "the figure");
    OnlyKeys(doc, "", {"view", "splines", "stacks", "muscle", "measure"});
    if (doc.contains("view")) ReadView(doc["view"], "/view");
    if (!doc.contains("splines")) Fail("", "the figure needs \"splines\"");
    ReadSplines(doc["splines"], "/splines");
    if (doc.contains("stacks")) ReadStacks(doc["stacks"], "/stacks");
    if (doc.contains("muscle")) ReadMuscle(doc["muscle"], "/muscle");
    if (doc.contains("measure")) {
      const json& m = doc["measure"];
      if (!m.is_string()) Fail("/measure", "\"measure\" must name a spline");
      auto it = names_.find(m.get<std::string>());
      if (it == names_.end()) Fail("/measure", "unknown spline '" + m.get<std::string>() + "'");
      spec_.measured = it->second;
    }
    return std::move(spec_);
  }

 private:
  void ReadView(const json& v, const std::string& path) {
    Object(v, path, "\"view\"");
    OnlyKeys(v, path, {"rotate", "scale", "translate"});
    if (v.contains("rotate")) spec_.rotate = Number(v["rotate"], path + "/rotate", "rotate", 360);
    if (v.contains("scale")) {
      spec_.scale = Number(v["scale"], path + "/scale", "scale", 1e4);
      if (std::fabs(spec_.scale) < 1e-3f) Fail(path + "/scale", "scale must be at least 0.001 in size");
    }
    if (v.contains("translate")) {
      const Vector t = Point(v["translate"], path + "/translate", "translate");
      spec_.tx = t.x, spec_.ty = t.y;
    }
  }

  void ReadSplines(const json& v, const std::string& path) {
    if (!v.is_array() || v.empty()) Fail(path, "\"splines\" must be a non-empty array");
    if (v.size() > kMaxSplines) Fail(path, "more than " + std::to_string(kMaxSplines) + " splines");
    std::size_t total = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      const json& s = Object(v[i], at, "a spline");
      OnlyKeys(s, at, {"name", "closed", "points"});
      SplineSpec spline;
      if (!s.contains("name") || !s["name"].is_string() || s["name"].get<std::string>().empty())
        Fail(at, "a spline needs a non-empty \"name\"");
      spline.name = s["name"].get<std::string>();
      if (spline.name.find(':') != std::string::npos) Fail(at + "/name", "a spline name must not contain ':'");
      if (!names_.emplace(spline.name, i).second) Fail(at + "/name", "duplicate spline name '" + spline.name + "'");
      if (s.contains("closed")) {
        if (!s["closed"].is_boolean()) Fail(at + "/closed", "\"closed\" must be true or false");
        spline.closed = s["closed"].get<bool>();
      }
      if (!s.contains("points") || !s["points"].is_array() || s["points"].size() < 2)
        Fail(at, "spline '" + spline.name + "' needs \"points\": an array of at least 2 points");
      const json& points = s["points"];
      total += points.size();
      if (total > kMaxPoints) Fail(at + "/points", "more than " + std::to_string(kMaxPoints) + " points in all");
      for (std::size_t j = 0; j < points.size(); ++j)
        spline.points.push_back(ReadPoint(points[j], at + "/points/" + std::to_string(j)));
      spec_.splines.push_back(std::move(spline));
    }
  }

  Ref ReadRef(const json& v, const std::string& path) {
    if (!v.is_string()) Fail(path, "a point reference must be a string \"spline:index\"");
    const std::string text = v.get<std::string>();
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 == text.size() ||
        text.find_first_not_of("0123456789", colon + 1) != std::string::npos || text.size() - colon > 6)
      Fail(path, "malformed point reference '" + text + "' (expected \"spline:index\")");
    auto it = names_.find(text.substr(0, colon));
    if (it == names_.end()) Fail(path, "unknown spline '" + text.substr(0, colon) + "'");
    const std::size_t index = std::stoul(text.substr(colon + 1));
    const std::size_t count = spec_.splines[it->second].points.size();
    if (index >= count)
      Fail(path, "point index " + std::to_string(index) + " out of range: spline '" + it->first + "' has " +
                     std::to_string(count) + " points");
    return Ref{it->second, index};
  }

  void ReadStacks(const json& v, const std::string& path) {
    if (!v.is_array()) Fail(path, "\"stacks\" must be an array");
    std::map<std::pair<std::size_t, std::size_t>, std::string> stacked;
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      if (!v[i].is_array() || v[i].size() < 2) Fail(at, "a stack must be an array of at least 2 point references");
      std::vector<Ref> stack;
      for (std::size_t j = 0; j < v[i].size(); ++j) {
        const std::string refPath = at + "/" + std::to_string(j);
        const Ref r = ReadRef(v[i][j], refPath);
        if (!stacked.emplace(std::make_pair(r.spline, r.point), refPath).second)
          Fail(refPath, "point '" + v[i][j].get<std::string>() + "' is already in a stack");
        stack.push_back(r);
      }
      CheckShared(stack, at);
      spec_.stacks.push_back(std::move(stack));
      spec_.stackPaths.push_back(at);
    }
  }

  // Non-hook members share their head's position.
  void CheckShared(const std::vector<Ref>& stack, const std::string& path) {
    const PointSpec& head = spec_.splines[stack[0].spline].points[stack[0].point];
    if (head.hook) return;
    for (std::size_t j = 1; j < stack.size(); ++j) {
      const PointSpec& m = spec_.splines[stack[j].spline].points[stack[j].point];
      if (m.hook || m.at == head.at) continue;
      char text[200];
      std::snprintf(text, sizeof text, "stack member %zu at (%g, %g, %g) is not at its head's position (%g, %g, %g)",
                    j, m.at.x, m.at.y, m.at.z, head.at.x, head.at.y, head.at.z);
      Fail(path + "/" + std::to_string(j), text);
    }
  }

  void ReadMuscle(const json& v, const std::string& path) {
    if (!v.is_array()) Fail(path, "\"muscle\" must be an array");
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      const json& e = Object(v[i], at, "a muscle effect");
      OnlyKeys(e, at, {"point", "move"});
      if (!e.contains("point") || !e.contains("move")) Fail(at, "a muscle effect needs \"point\" and \"move\"");
      spec_.muscle.push_back(MuscleSpec{at, ReadRef(e["point"], at + "/point"), Point(e["move"], at + "/move", "\"move\"")});
    }
  }

  FigureSpec spec_;
  std::map<std::string, std::size_t> names_;
};

// --- Building ----------------------------------------------------------------

struct Violation {
  bool found = false;
  const SegmentCP* cp = nullptr;
  std::string reason;
};

void KeepFirst(const FigureViolation& v, void* context) {
  auto* first = static_cast<Violation*>(context);
  if (first->found) return;
  first->found = true;
  first->cp = v.cp;
  first->reason = std::string("figure rule ") + FigureRuleName(v.rule) + ": " + (v.message ? v.message : "");
}

std::unique_ptr<HostFigure> Build(const FigureSpec& spec, std::map<const SegmentCP*, std::string>& paths) {
  auto figure = std::make_unique<HostFigure>();
  std::vector<std::vector<SegmentCP*>> points;
  for (const SplineSpec& s : spec.splines) {
    std::vector<SegmentCP*> cps;
    for (const PointSpec& p : s.points) {
      SegmentCP* cp = p.hook ? figure->NewHook(p.s, p.in, p.out) : figure->NewPoint(p.at, p.smooth, p.in, p.out);
      if (p.hook) {
        cp->p = p.at;
        cp->SetSmooth(p.smooth ? 1 : 0);
      }
      paths[cp] = p.path;
      cps.push_back(cp);
    }
    points.push_back(cps);
    figure->AddSpline(s.name, std::move(cps), s.closed);
  }
  for (const std::vector<Ref>& stack : spec.stacks) {
    std::vector<SegmentCP*> members;
    for (const Ref& r : stack) members.push_back(points[r.spline][r.point]);
    HostFigure::Stack(members);
  }
  figure->SetScreen(spec.rotate, spec.scale, spec.tx, spec.ty);
  for (const MuscleSpec& m : spec.muscle) figure->AddMuscleOffset(points[m.point.spline][m.point.point], m.move);
  figure->measured = spec.measured;
  return figure;
}

}  // namespace

FigureFileResult ReadFigureFile(std::string_view text) {
  FigureFileResult result;
  if (NestingDepth(text) > kMaxDepth) {
    result.error = {1, "nesting deeper than " + std::to_string(kMaxDepth) + " levels"};
    return result;
  }
  json doc;
  try {
    doc = json::parse(text.begin(), text.end());
  } catch (const json::parse_error& e) {
    std::string reason = e.what();
    const std::size_t column = reason.find("column ");
    const std::size_t colon = column == std::string::npos ? std::string::npos : reason.find(": ", column);
    if (colon != std::string::npos) reason = reason.substr(colon + 2);
    result.error = {LineAtByte(text, e.byte == 0 ? 0 : e.byte - 1), "malformed JSON: " + reason};
    return result;
  } catch (const json::exception& e) {
    // A number out of range: the message quotes the token, which places it.
    std::string reason = e.what();
    const std::size_t open = reason.find('\''), close = reason.rfind('\'');
    std::size_t at = std::string_view::npos;
    if (open != std::string::npos && close > open) at = text.find(reason.substr(open + 1, close - open - 1));
    const std::size_t bracket = reason.find("] ");
    if (bracket != std::string::npos) reason = reason.substr(bracket + 2);
    result.error = {at == std::string_view::npos ? 0 : LineAtByte(text, at), "malformed JSON: " + reason};
    return result;
  }
  LineIndex lines(text);
  try {
    const FigureSpec spec = SpecReader().Read(doc);
    std::map<const SegmentCP*, std::string> paths;
    std::unique_ptr<HostFigure> figure = Build(spec, paths);
    std::vector<SegmentCP*> firsts;
    for (const HostFigure::Spline& s : figure->splines) firsts.push_back(s.points.front());
    Violation first;
    ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), KeepFirst, &first);
    if (first.found) {
      auto it = paths.find(first.cp);
      Fail(it != paths.end() ? it->second : "", first.reason);
    }
    result.figure = std::move(figure);
  } catch (const Failure& f) {
    result.error = {lines.Line(f.path), f.reason};
  } catch (const std::bad_alloc&) {
    result.error = {0, "out of memory"};
  } catch (const std::exception& e) {
    result.error = {0, e.what()};
  }
  return result;
}

std::string FormatFigureFileError(const FigureFileError& error) {
  if (error.line == 0) return error.reason;
  return "line " + std::to_string(error.line) + ": " + error.reason;
}

}  // namespace splinecore::demo
