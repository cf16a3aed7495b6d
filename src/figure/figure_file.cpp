// SPDX-License-Identifier: MIT
// Figure files: JSON text to a checked FigureDescription and back.
#include "splinecore/figure_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <set>
#include <vector>

#include <nlohmann/json.hpp>

#include "figure/invert.h"

namespace splinecore {

FigureFileError::FigureFileError(int line, const std::string& reason)
    : FigureError(line == 0 ? reason : "line " + std::to_string(line) + ": " + reason), line_(line), reason_(reason) {}

namespace {

using json = nlohmann::json;

constexpr int kMaxDepth = 32;
constexpr std::size_t kMaxSplines = 4096;
constexpr std::size_t kMaxPoints = 60000;  // below the muscle table's 65535 ids
constexpr double kMaxCoordinate = 1e6;
constexpr Matrix kIdentity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

// A reader error at a JSON location ("/splines/0/points/2"), turned into a
// line by ReadFigureFile.
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

// Whether [ and { nest deeper than `limit` outside strings; the text need
// not be valid.
bool NestsDeeperThan(std::string_view text, int limit) {
  int depth = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\') ++i;
      else if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > limit) return true;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return false;
}

// The line on which each value of a valid JSON text starts, by JSON pointer.
class LineIndex {
 public:
  explicit LineIndex(std::string_view text) : text_(text) { Value(""); }

  // The line of `path`, or of its nearest recorded ancestor.
  int Line(std::string path) const {
    for (;;) {
      const auto it = lines_.find(path);
      if (it != lines_.end()) return it->second;
      const std::size_t slash = path.rfind('/');
      if (slash == std::string::npos) return 0;
      path.resize(slash);
    }
  }

 private:
  // The character at pos_; '\0' past the end (a valid JSON text has no NUL).
  char Peek() const { return pos_ < text_.size() ? text_[pos_] : '\0'; }

  void Skip() {
    for (char c = Peek(); c == ' ' || c == '\t' || c == '\n' || c == '\r'; c = Peek()) {
      line_ += c == '\n';
      ++pos_;
    }
  }

  std::string String() {
    std::string s;
    for (++pos_; Peek() != '"' && Peek() != '\0'; ++pos_) {
      if (Peek() == '\\') ++pos_;
      s += Peek();
    }
    ++pos_;
    return s;
  }

  void Value(const std::string& path) {
    Skip();
    if (Peek() == '\0') return;
    lines_.emplace(path, line_);
    const char c = Peek();
    if (c == '{' || c == '[') {
      ++pos_;
      for (int index = 0;; ++index) {
        Skip();
        if (Peek() == '\0' || Peek() == '}' || Peek() == ']') break;
        std::string key = std::to_string(index);
        if (c == '{') {
          key = String();
          Skip();
          ++pos_;  // ':'
        }
        Value(path + "/" + key);
        Skip();
        if (Peek() == ',') ++pos_;
      }
      ++pos_;
    } else if (c == '"') {
      String();
    } else {
      // A number or a literal, up to what ends it (strchr finds '\0' too).
      while (std::strchr(",}] \n\t\r", Peek()) == nullptr) ++pos_;
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  int line_ = 1;
  std::map<std::string, int> lines_;
};

// --- reading -----------------------------------------------------------------

void OnlyKeys(const json& object, const std::string& path, std::initializer_list<const char*> keys) {
  for (auto it = object.begin(); it != object.end(); ++it) {
    if (path.empty() && it.key().rfind("x-", 0) == 0) continue;  // a host's own annotation
    bool known = false;
    for (const char* key : keys) known = known || it.key() == key;
    if (!known) Fail(path + "/" + it.key(), "unknown key '" + it.key() + "'");
  }
}

const json& Object(const json& v, const std::string& path, const char* what) {
  if (!v.is_object()) Fail(path, std::string(what) + " must be an object");
  return v;
}

bool Flag(const json& v, const std::string& path, const char* what) {
  if (!v.is_boolean()) Fail(path, std::string("\"") + what + "\" must be true or false");
  return v.get<bool>();
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

Matrix ReadMatrix(const json& v, const std::string& path) {
  if (!v.is_array() || v.size() != 3) Fail(path, "a matrix must be 3 rows of 4 numbers");
  Matrix m;
  for (std::size_t r = 0; r < 3; ++r) {
    const std::string row = path + "/" + std::to_string(r);
    if (!v[r].is_array() || v[r].size() != 4) Fail(row, "a matrix row must be 4 numbers");
    for (std::size_t c = 0; c < 4; ++c) m.m[r][c] = Number(v[r][c], row + "/" + std::to_string(c), "a matrix entry", 1e30);
  }
  return m;
}

PointDesc ReadPoint(const json& v, const std::string& path) {
  Object(v, path, "a point");
  OnlyKeys(v, path, {"at", "smooth", "hook", "in", "out"});
  PointDesc p;
  if (v.contains("hook")) {
    p.hook = true;
    p.s = Number(v["hook"], path + "/hook", "hook parameter");
    if (v.contains("at")) Fail(path + "/at", "a hook takes its position from its carrier: no \"at\"");
  } else if (v.contains("at")) {
    p.at = Point(v["at"], path + "/at", "\"at\"");
  } else {
    Fail(path, "a point needs \"at\" (or \"hook\")");
  }
  if (v.contains("smooth")) p.smooth = Flag(v["smooth"], path + "/smooth", "smooth");
  if (v.contains("in")) p.in = ReadDelta(v["in"], path + "/in");
  if (v.contains("out")) p.out = ReadDelta(v["out"], path + "/out");
  return p;
}

class Reader {
 public:
  FigureDescription Read(const json& doc) {
    Object(doc, "", "the figure");
    OnlyKeys(doc, "", {"view", "screen", "muscleMode", "splines", "stacks", "muscle"});
    d_.view = d_.inverseView = d_.screen = d_.inverseScreen = kIdentity;
    if (doc.contains("view")) ReadTransform(doc["view"], "/view", &d_.view, &d_.inverseView);
    if (doc.contains("screen")) ReadTransform(doc["screen"], "/screen", &d_.screen, &d_.inverseScreen);
    if (doc.contains("muscleMode")) d_.muscleMode = Flag(doc["muscleMode"], "/muscleMode", "muscleMode");
    if (!doc.contains("splines")) Fail("", "the figure needs \"splines\"");
    ReadSplines(doc["splines"], "/splines");
    if (doc.contains("stacks")) ReadStacks(doc["stacks"], "/stacks");
    if (doc.contains("muscle")) ReadMuscle(doc["muscle"], "/muscle");
    return std::move(d_);
  }

  // The JSON path of each point, for errors found while building.
  std::map<std::pair<int, int>, std::string> paths;
  std::vector<std::string> stackPaths, hookPaths;

 private:
  // {"matrix": M, "inverse": I}, the inverse optional (computed), or
  // {"rotate": degrees, "scale": k, "translate": [x, y]}: a y-flipping
  // scale, then the rotation, then the translation.
  void ReadTransform(const json& v, const std::string& path, Matrix* m, Matrix* inverse) {
    Object(v, path, "a transform");
    if (v.contains("matrix")) {
      OnlyKeys(v, path, {"matrix", "inverse"});
      *m = ReadMatrix(v["matrix"], path + "/matrix");
      if (v.contains("inverse")) {
        *inverse = ReadMatrix(v["inverse"], path + "/inverse");
      } else if (!detail::InvertAffine(*m, inverse)) {
        Fail(path + "/matrix", "the matrix is not invertible; give \"inverse\"");
      }
      return;
    }
    OnlyKeys(v, path, {"rotate", "scale", "translate"});
    float rotate = 0, scale = 1, tx = 0, ty = 0;
    if (v.contains("rotate")) rotate = Number(v["rotate"], path + "/rotate", "rotate", 360);
    if (v.contains("scale")) {
      scale = Number(v["scale"], path + "/scale", "scale", 1e4);
      if (std::fabs(scale) < 1e-3f) Fail(path + "/scale", "scale must be at least 0.001 in size");
    }
    if (v.contains("translate")) {
      const Vector t = Point(v["translate"], path + "/translate", "translate");
      tx = t.x;
      ty = t.y;
    }
    const double a = rotate * (3.14159265358979323846 / 180.0);
    const double c = std::cos(a), s = std::sin(a), k = scale;
    auto f = [](double x) { return static_cast<float>(x); };
    // Rotation after a y-flipping scale: [c -s; s c] * diag(k, -k).
    *m = Matrix{{{f(c * k), f(s * k), 0, tx}, {f(s * k), f(-c * k), 0, ty}, {0, 0, f(k), 0}}};
    // diag(1/k, -1/k) * [c s; -s c], after taking the translation off.
    const double i00 = c / k, i01 = s / k, i10 = s / k, i11 = -c / k;
    *inverse = Matrix{{{f(i00), f(i01), 0, f(-(i00 * tx + i01 * ty))},
                       {f(i10), f(i11), 0, f(-(i10 * tx + i11 * ty))},
                       {0, 0, f(1.0 / k), 0}}};
  }

  void ReadSplines(const json& v, const std::string& path) {
    if (!v.is_array() || v.empty()) Fail(path, "\"splines\" must be a non-empty array");
    if (v.size() > kMaxSplines) Fail(path, "more than " + std::to_string(kMaxSplines) + " splines");
    std::size_t total = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      const json& s = Object(v[i], at, "a spline");
      OnlyKeys(s, at, {"name", "closed", "points"});
      SplineDesc spline;
      if (s.contains("name")) {
        if (!s["name"].is_string() || s["name"].get<std::string>().empty())
          Fail(at + "/name", "a spline's \"name\" must be a non-empty string");
        spline.name = s["name"].get<std::string>();
        if (spline.name.find(':') != std::string::npos) Fail(at + "/name", "a spline name must not contain ':'");
        if (!names_.emplace(spline.name, static_cast<int>(i)).second)
          Fail(at + "/name", "duplicate spline name '" + spline.name + "'");
      }
      if (s.contains("closed")) spline.closed = Flag(s["closed"], at + "/closed", "closed");
      if (!s.contains("points") || !s["points"].is_array() || s["points"].empty())
        Fail(at, "a spline needs \"points\": a non-empty array");
      const json& points = s["points"];
      total += points.size();
      if (total > kMaxPoints) Fail(at + "/points", "more than " + std::to_string(kMaxPoints) + " points in all");
      for (std::size_t j = 0; j < points.size(); ++j) {
        const std::string p = at + "/points/" + std::to_string(j);
        spline.points.push_back(ReadPoint(points[j], p));
        paths[{static_cast<int>(i), static_cast<int>(j)}] = p;
      }
      d_.splines.push_back(std::move(spline));
    }
  }

  // "name:index", or [spline, index] by position.
  PointId ReadRef(const json& v, const std::string& path) {
    PointId id;
    std::string shown;
    if (v.is_array() && v.size() == 2 && v[0].is_number_unsigned() && v[1].is_number_unsigned()) {
      if (v[0].get<std::uint64_t>() >= d_.splines.size()) Fail(path, "no spline " + v[0].dump());
      id.spline = static_cast<int>(v[0].get<std::uint64_t>());
      shown = std::to_string(id.spline);
      if (v[1].get<std::uint64_t>() > kMaxPoints) Fail(path, "point index " + v[1].dump() + " out of range");
      id.index = static_cast<int>(v[1].get<std::uint64_t>());
    } else if (v.is_string()) {
      const std::string text = v.get<std::string>();
      const std::size_t colon = text.rfind(':');
      if (colon == std::string::npos || colon + 1 == text.size() ||
          text.find_first_not_of("0123456789", colon + 1) != std::string::npos || text.size() - colon > 6)
        Fail(path, "malformed point reference '" + text + "' (expected \"spline:index\")");
      const auto it = names_.find(text.substr(0, colon));
      if (it == names_.end()) Fail(path, "unknown spline '" + text.substr(0, colon) + "'");
      id.spline = it->second;
      id.index = std::stoi(text.substr(colon + 1));
      shown = "'" + it->first + "'";
    } else {
      Fail(path, "a point reference must be \"spline:index\" or [spline, index]");
    }
    const std::size_t count = d_.splines[static_cast<std::size_t>(id.spline)].points.size();
    if (static_cast<std::size_t>(id.index) >= count)
      Fail(path, "point index " + std::to_string(id.index) + " out of range: spline " + shown + " has " +
                     std::to_string(count) + " points");
    return id;
  }

  // Top to bottom; a hook hangs below the nearest non-hook listed above it,
  // its carrier, in run order.
  void ReadStacks(const json& v, const std::string& path) {
    if (!v.is_array()) Fail(path, "\"stacks\" must be an array");
    std::set<std::pair<int, int>> stacked;
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      if (!v[i].is_array() || v[i].size() < 2) Fail(at, "a stack must be an array of at least 2 point references");
      std::vector<PointId> members;
      PointId carrier{-1, -1};
      for (std::size_t j = 0; j < v[i].size(); ++j) {
        const std::string refPath = at + "/" + std::to_string(j);
        const PointId id = ReadRef(v[i][j], refPath);
        if (!stacked.insert({id.spline, id.index}).second) Fail(refPath, "the point is already in a stack");
        if (d_.splines[static_cast<std::size_t>(id.spline)].points[static_cast<std::size_t>(id.index)].hook) {
          if (carrier.spline < 0) Fail(refPath, "a hook needs a carrier (a non-hook point) above it in its stack");
          d_.hooks.push_back(HookDesc{id, carrier});
          hookPaths.push_back(refPath);
        } else {
          carrier = id;
          members.push_back(id);
        }
      }
      if (members.size() > 1) {
        d_.stacks.push_back(std::move(members));
        stackPaths.push_back(at);
      }
    }
  }

  void ReadMuscle(const json& v, const std::string& path) {
    if (!v.is_array()) Fail(path, "\"muscle\" must be an array");
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string at = path + "/" + std::to_string(i);
      const json& e = Object(v[i], at, "a muscle effect");
      OnlyKeys(e, at, {"point", "move"});
      if (!e.contains("point") || !e.contains("move")) Fail(at, "a muscle effect needs \"point\" and \"move\"");
      d_.muscleEffects.push_back(
          MuscleEffectDesc{ReadRef(e["point"], at + "/point"), Point(e["move"], at + "/move", "\"move\""), nullptr});
    }
  }

  FigureDescription d_;
  std::map<std::string, int> names_;
};

// The JSON path of the point a Figure message names ("point s:i: ..."), or
// `otherwise`.
std::string PointPath(const std::string& message, const Reader& reader, const std::string& otherwise) {
  int spline = 0, index = 0;
  if (std::sscanf(message.c_str(), "point %d:%d:", &spline, &index) == 2) {
    const auto it = reader.paths.find({spline, index});
    if (it != reader.paths.end()) return it->second;
  }
  return otherwise;
}

// Builds the figure the way Figure(description) does, one step at a time,
// so that a refusal is reported at the step's place in the file. The
// transforms and the muscle effects (their points and moves), checked as
// they were read, cannot make it invalid.
void Check(const FigureDescription& d, const Reader& reader) {
  Figure f;
  for (std::size_t i = 0; i < d.splines.size(); ++i) {
    try {
      f.AddSpline(d.splines[i]);
    } catch (const FigureError& e) {
      Fail(PointPath(e.what(), reader, "/splines/" + std::to_string(i)), e.what());
    }
  }
  // Stacks and hooks are reported where the file refers to them.
  std::string step;
  try {
    for (std::size_t i = 0; i < d.stacks.size(); ++i) {
      step = reader.stackPaths[i];
      f.Stack(d.stacks[i]);
    }
    for (std::size_t i = 0; i < d.hooks.size(); ++i) {
      step = reader.hookPaths[i];
      f.AddHook(d.hooks[i].hook, d.hooks[i].carrier);
    }
  } catch (const FigureError& e) {
    Fail(step, e.what());
  }
  const std::vector<std::string> problems = f.Validate();
  if (!problems.empty()) Fail(PointPath(problems.front(), reader, ""), problems.front());
}

// --- writing -----------------------------------------------------------------

// Nine significant digits: every float reads back to its own bits. A
// negative zero is written "-0.0": JSON reads "-0" as the integer 0.
std::string Num(float v) {
  if (v == 0.0f && std::signbit(v)) return "-0.0";
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(v));
  return text;
}

std::string Triple(float a, float b, float c) { return "[" + Num(a) + ", " + Num(b) + ", " + Num(c) + "]"; }

std::string WriteMatrix(const Matrix& m) {
  std::string out = "[";
  for (int r = 0; r < 3; ++r) {
    out += r == 0 ? "[" : ", [";
    for (int c = 0; c < 4; ++c) out += (c == 0 ? "" : ", ") + Num(m.m[r][c]);
    out += "]";
  }
  return out + "]";
}

std::string Quoted(const std::string& s) { return json(s).dump(); }

bool NoTurn(const Delta& d) { return d.pitch == 0.0f && d.yaw == 0.0f && d.magnitude == 1.0f && !std::signbit(d.pitch) && !std::signbit(d.yaw); }

}  // namespace

FigureDescription ReadFigureFile(std::string_view text) {
  if (NestsDeeperThan(text, kMaxDepth)) throw FigureFileError(1, "nesting deeper than " + std::to_string(kMaxDepth) + " levels");
  json doc;
  try {
    doc = json::parse(text.begin(), text.end());
  } catch (const json::parse_error& e) {
    std::string reason = e.what();
    const std::size_t column = reason.find("column ");
    const std::size_t colon = column == std::string::npos ? std::string::npos : reason.find(": ", column);
    if (colon != std::string::npos) reason = reason.substr(colon + 2);
    throw FigureFileError(LineAtByte(text, e.byte == 0 ? 0 : e.byte - 1), "malformed JSON: " + reason);
  } catch (const json::exception& e) {
    // A number out of range: the message quotes the token, which places it.
    std::string reason = e.what();
    const std::size_t open = reason.find('\''), close = reason.rfind('\'');
    const std::size_t at = text.find(reason.substr(open + 1, close - open - 1));
    reason = reason.substr(reason.find("] ") + 2);
    throw FigureFileError(LineAtByte(text, at), "malformed JSON: " + reason);
  }
  const LineIndex lines(text);
  try {
    Reader reader;
    FigureDescription d = reader.Read(doc);
    Check(d, reader);
    return d;
  } catch (const Failure& f) {
    throw FigureFileError(lines.Line(f.path), f.reason);
  }
}

std::string WriteFigureFile(const FigureDescription& d) {
  for (const MuscleEffectDesc& m : d.muscleEffects)
    if (m.custom != nullptr)
      throw FigureError("point " + std::to_string(m.point.spline) + ":" + std::to_string(m.point.index) +
                        ": a host muscle effect cannot be written to a figure file");
  // Points are referred to by name where their spline has one.
  auto ref = [&](PointId id) {
    const std::string& name = d.splines[static_cast<std::size_t>(id.spline)].name;
    if (name.empty()) return "[" + std::to_string(id.spline) + ", " + std::to_string(id.index) + "]";
    return Quoted(name + ":" + std::to_string(id.index));
  };
  std::string out = "{\n";
  out += "  \"view\": {\"matrix\": " + WriteMatrix(d.view) + ", \"inverse\": " + WriteMatrix(d.inverseView) + "},\n";
  out += "  \"screen\": {\"matrix\": " + WriteMatrix(d.screen) + ", \"inverse\": " + WriteMatrix(d.inverseScreen) +
         "},\n";
  if (d.muscleMode) out += "  \"muscleMode\": true,\n";
  out += "  \"splines\": [";
  for (std::size_t i = 0; i < d.splines.size(); ++i) {
    const SplineDesc& s = d.splines[i];
    out += i == 0 ? "\n    {" : ",\n    {";
    if (!s.name.empty()) out += "\"name\": " + Quoted(s.name) + ", ";
    if (s.closed) out += "\"closed\": true, ";
    out += "\"points\": [";
    for (std::size_t j = 0; j < s.points.size(); ++j) {
      const PointDesc& p = s.points[j];
      out += j == 0 ? "\n      {" : ",\n      {";
      out += p.hook ? "\"hook\": " + Num(p.s) : "\"at\": " + Triple(p.at.x, p.at.y, p.at.z);
      if (!p.smooth) out += ", \"smooth\": false";
      if (!NoTurn(p.in)) out += ", \"in\": " + Triple(p.in.pitch, p.in.yaw, p.in.magnitude);
      if (!NoTurn(p.out)) out += ", \"out\": " + Triple(p.out.pitch, p.out.yaw, p.out.magnitude);
      out += "}";
    }
    out += "]}";
  }
  out += "\n  ]";
  // Stacks top to bottom with each carrier's hooks below it; a carrier alone
  // in its stack gets a stack of its own and its hooks.
  std::map<std::pair<int, int>, std::vector<PointId>> runs;
  for (const HookDesc& h : d.hooks) runs[{h.carrier.spline, h.carrier.index}].push_back(h.hook);
  std::vector<std::vector<PointId>> stacks;
  std::set<std::pair<int, int>> inStack;
  for (const std::vector<PointId>& stack : d.stacks) {
    std::vector<PointId> members;
    for (PointId m : stack) {
      inStack.insert({m.spline, m.index});
      members.push_back(m);
      const auto run = runs.find({m.spline, m.index});
      if (run != runs.end()) members.insert(members.end(), run->second.begin(), run->second.end());
    }
    stacks.push_back(members);
  }
  for (const auto& [carrier, hooks] : runs) {
    if (inStack.count(carrier) != 0) continue;
    std::vector<PointId> members{PointId{carrier.first, carrier.second}};
    members.insert(members.end(), hooks.begin(), hooks.end());
    stacks.push_back(members);
  }
  if (!stacks.empty()) {
    out += ",\n  \"stacks\": [";
    for (std::size_t i = 0; i < stacks.size(); ++i) {
      out += i == 0 ? "\n    [" : ",\n    [";
      for (std::size_t j = 0; j < stacks[i].size(); ++j) out += (j == 0 ? "" : ", ") + ref(stacks[i][j]);
      out += "]";
    }
    out += "\n  ]";
  }
  if (!d.muscleEffects.empty()) {
    out += ",\n  \"muscle\": [";
    for (std::size_t i = 0; i < d.muscleEffects.size(); ++i) {
      const MuscleEffectDesc& m = d.muscleEffects[i];
      out += (i == 0 ? "\n    " : ",\n    ") + std::string("{\"point\": ") + ref(m.point) +
             ", \"move\": " + Triple(m.offset.x, m.offset.y, m.offset.z) + "}";
    }
    out += "\n  ]";
  }
  return out + "\n}\n";
}

}  // namespace splinecore
