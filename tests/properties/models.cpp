// The models, each a few lines of the plainest code.

#include "models.h"

#include <cmath>
#include <cstdio>

namespace model {

std::string Number(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%.4f", value);
  return std::string(text).substr(0, 29);
}

std::string Integer(long long value, unsigned width) {
  char text[128];
  std::snprintf(text, sizeof text, "%0*lld", width > 100 ? 100 : static_cast<int>(width), value);
  return text;
}

std::string Reference(int object) {
  return std::to_string(object) + " 0 R";
}

std::string ReferenceArray(int first, int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i) text += Reference(first + i) + " ";
  text.back() = ']';
  return text;
}

std::string Line(const std::vector<std::string>& parts) {
  std::string line;
  for (const std::string& part : parts) {
    if (!line.empty() && line.back() != '[' && part != "]") line += " ";
    line += part;
  }
  return line;
}

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) text += (i == 0 ? "" : "\r\n") + lines[i];
  return text;
}

std::string TextString(const std::wstring& text) {
  const std::size_t room = 2 * text.size();
  std::string bytes;
  bool full = false;
  for (const wchar_t unit : text) {
    const auto c = static_cast<unsigned long>(unit) & 0xFFFFFFFFul;
    if (c == 0) break;
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return "()";
    std::vector<unsigned long> units = {c};
    if (c > 0xFFFF) units = {0xD800 + (c - 0x10000) / 0x400, 0xDC00 + (c - 0x10000) % 0x400};
    if (bytes.size() + 2 * units.size() > room) full = true;
    if (full) continue;  // what follows is still looked at: all of it has to be valid
    for (const unsigned long u : units) {
      bytes += static_cast<char>(u / 256);
      bytes += static_cast<char>(u % 256);
    }
  }
  if (bytes.empty()) return "()";

  std::string literal = "(\xFE\xFF";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    char octal[8];
    std::snprintf(octal, sizeof octal, "\\%.3o", value);
    if (value < 0x20) {
      literal += octal;
    } else if (byte == '\\' || byte == '(' || byte == ')') {
      literal += std::string("\\") + byte;
    } else {
      literal += byte;
    }
  }
  return literal + ")";
}

// Six bits to a byte from the end; what is left goes into the first one, behind as many ones as
// there are bytes.
std::string Utf8(const std::wstring& text) {
  std::string bytes;
  for (const wchar_t unit : text) {
    auto rest = static_cast<unsigned long>(unit);
    const int length = rest < 0x80 ? 1 : rest < 0x800 ? 2 : rest < 0x10000 ? 3 : 4;
    std::string character;
    for (int i = 1; i < length; ++i, rest /= 64) {
      character.insert(0, 1, static_cast<char>(0x80 + rest % 64));
    }
    const unsigned long firsts[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(firsts[length] + rest) + character;
  }
  return bytes;
}

std::string Key(const std::string& key) {
  std::string kept;
  for (const char byte : key) {
    const auto value = static_cast<unsigned char>(byte);
    if (value >= 0x21 && value <= 0x7E) kept += byte;
  }
  if (kept.empty()) return "/JT_DUMMY_KEY";
  return kept[0] == '/' ? kept : "/" + kept;
}

std::string FirstComponent(std::string path) {
  if (!path.empty() && path[0] == '/') path.erase(0, 1);
  if (path.find('/') != std::string::npos) path.erase(path.find('/'));
  return path.empty() ? "" : "/" + path;
}

std::string TakeFirstComponent(std::string& path) {
  const std::string component = FirstComponent(path);
  path.erase(0, component.size());
  return component;
}

// Step by step, with the whole text at hand at every step.
std::string Item(const std::string& key, const std::string& value, std::string previousParent) {
  const std::size_t position = key.rfind('/');
  const bool path = position != std::string::npos;
  const std::string leaf = path ? key.substr(position) : key;
  std::string parent = path ? key.substr(0, position) : key;
  std::string text = leaf + " " + value;

  for (;;) {
    const std::string a = TakeFirstComponent(parent);
    const std::string b = FirstComponent(previousParent);
    if (a == b) {
      TakeFirstComponent(previousParent);
    } else if (!a.empty()) {
      const std::size_t lineEnd = text.find_last_of("\r\n");
      text.insert(lineEnd == std::string::npos ? 0 : lineEnd + 1, a + "\r\n<<\r\n");
    }
    if (a.empty()) break;
  }
  while (!TakeFirstComponent(previousParent).empty()) text = ">>\r\n" + text;
  return text;
}

std::string Body(const std::map<std::string, std::string>& entries) {
  std::string body;
  std::string previous;
  for (const auto& [key, value] : entries) {
    const bool rendered = !key.empty() && key != "/Length" && key != "/Stream";
    if (rendered) body += Item(key, value, previous) + "\r\n";
    const std::size_t position = key.rfind('/');
    previous = position == std::string::npos ? "" : key.substr(0, position);
  }
  body += Item("", "", previous);

  const auto trimmed = [](char byte) { return byte >= 0x01 && byte <= 0x20; };
  while (!body.empty() && trimmed(body.back())) body.pop_back();
  while (!body.empty() && trimmed(body.front())) body.erase(0, 1);
  return body;
}

// Ten neighbours of a level get a parent on the next one, until ten or fewer are left for the
// root. A node with ten kids claims all the pages that it could hold.
std::vector<TreeObject> PageTree(int pages, int firstPage) {
  std::vector<TreeObject> tree;
  for (int i = 0; i < pages; ++i) tree.push_back({firstPage + i, 0, 0, {}});
  std::size_t levelStart = 0;
  int claim = 10;
  for (;;) {
    const std::size_t levelEnd = tree.size();
    const bool root = levelEnd - levelStart <= 10;
    for (std::size_t kid = levelStart; root ? tree.size() == levelEnd : kid < levelEnd; kid += 10) {
      TreeObject node{firstPage + static_cast<int>(tree.size()), 0, 0, {}};
      for (std::size_t k = kid; k < levelEnd && k < kid + 10; ++k) {
        node.kids.push_back(tree[k].number);
        tree[k].parent = node.number;
      }
      node.count = root ? pages : node.kids.size() == 10 ? claim : pages % claim;
      tree.push_back(node);
    }
    if (root) return tree;
    levelStart = levelEnd;
    claim *= 10;
  }
}

namespace {

bool None(const JTPDFRGBColor& c) {
  return c.red == 255 && c.green == 255 && c.blue == 255 && c.alpha == 0;
}

std::string Color(const JTPDFRGBColor& c) {
  return Number(c.red / 255.0) + " " + Number(c.green / 255.0) + " " + Number(c.blue / 255.0);
}

std::string Matrix(const JTPDFRect& box, const std::string& scale) {
  const double r = box.angle * 0.017453292519943295;
  return "1 0 0 1 " + Number(box.width * 0.5 + box.left) + " " +
         Number(box.height * 0.5 + box.bottom) + " cm " + Number(std::cos(r)) + " " +
         Number(std::sin(r)) + " " + Number(-std::sin(r)) + " " + Number(std::cos(r)) + " 0 0 cm " +
         scale + " " + Number(box.width * -0.5) + " " + Number(box.height * -0.5) + " cm";
}

}  // namespace

JTPDFRect Canvas::Points(const JTPDFRect& box) const {
  return {box.left * unit_, box.bottom * unit_, box.width * unit_, box.height * unit_, box.angle};
}

void Canvas::Image(int image, const JTPDFRect& box) {
  const JTPDFRect points = Points(box);
  const std::string number = std::to_string(image);
  const std::string scale = Number(points.width) + " 0 0 " + Number(points.height);
  lines.push_back(Line({"q", Matrix(points, scale), " /Im" + number, "Do", "Q"}));
  entries["/Resources/XObject/Im" + number] = Reference(image);
}

void Canvas::Rectangle(const JTPDFRect& box, const JTPDFRGBColor& fill, const JTPDFRGBColor& stroke,
                       double lineWidth) {
  const JTPDFRect points = Points(box);
  lines.push_back("%rectangle");
  lines.push_back("q");
  if (!None(fill)) lines.push_back(Line({Color(fill), "rg"}));
  if (!None(stroke)) lines.push_back(Line({Color(stroke), "RG"}));
  lines.push_back(Line({Number(lineWidth * unit_), "w", Matrix(points, "1 0 0 1"), "0", "0",
                        Number(points.width), Number(points.height), "re"}));
  lines.push_back(None(fill) ? "S Q" : None(stroke) ? "F Q" : "B Q");
}

void Canvas::Circle(const JTPDFRect& box, const JTPDFRGBColor& fill, const JTPDFRGBColor& stroke,
                    double lineWidth) {
  const JTPDFRect p = Points(box);
  const double w = lineWidth * unit_;
  const double A = p.width * 0.5 - w * 0.5;
  const double B = p.height * 0.5 - w * 0.5;
  const double k = 0.551784;
  const double kA = k * A;
  const double kB = B * k;
  const auto n = [](double value) { return Number(value); };
  lines.push_back(Line({n(w), "w"}));
  lines.push_back(Line({Color(fill), "rg", Color(stroke), "RG"}));
  lines.push_back(
      Line({"q 1 0 0 1 ", n(p.width * 0.5 + p.left), n(p.height * 0.5 + p.bottom), " cm"}));
  lines.push_back(Line({n(-A), "0", " m"}));
  lines.push_back(Line({n(-A), n(kB), n(-kA), n(B), "0", n(B), "c"}));
  lines.push_back(Line({n(kA), n(B), n(A), n(kB), n(A), "0", "c"}));
  lines.push_back(Line({n(A), n(-kB), n(kA), n(-B), "0", n(-B), "c"}));
  lines.push_back(Line({n(-kA), n(-B), n(-A), n(-kB), n(-A), "0", "c"}));
  lines.push_back("b Q");
}

std::string BoxArray(const JTPDFRect& p) {
  return "[" + Number(p.left) + " " + Number(p.bottom) + " " + Number(p.left + p.width) + " " +
         Number(p.bottom + p.height) + "]";
}

}  // namespace model
