// The run's pictures as a page.
#include "sim/render/album.h"

#include <algorithm>
#include <fstream>

namespace kv::sim::render {

namespace {

std::string escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

bool isSafe(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '-' || c == '_';
}

std::string safe(const std::string& text) {
  std::string out = text;
  std::replace_if(
      out.begin(), out.end(), [](char c) { return !isSafe(c); }, '_');
  return out;
}

constexpr const char* kHead = R"(<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>kavelin-sim pictures</title>
<style>
body { font-family: sans-serif; margin: 1em 2em; background: #f4f4f6; }
section { display: flex; gap: 1.5em; align-items: flex-start; margin: 1.5em 0;
          border-top: 1px solid #ccc; padding-top: 1em; }
img { width: 300px; border: 1px solid #999; background: #fff; }
pre { font-size: 12px; line-height: 1.35; margin: 0; white-space: pre-wrap; }
.after { color: #999; }
h2 { font-size: 15px; margin: 0 0 .5em 0; }
</style></head><body>
<h1>kavelin-sim pictures</h1>
)";

}  // namespace

std::string Album::fileName(const std::string& scenarioFile, int line, const std::string& name) {
  std::string stem = scenarioFile.substr(scenarioFile.rfind('/') + 1);
  if (stem.size() > 4 && stem.compare(stem.size() - 4, 4, ".scn") == 0)
    stem.resize(stem.size() - 4);
  return safe(stem) + "-" + std::to_string(line) + "-" + safe(name) + ".png";
}

void Album::addPicture(std::string title, std::string file) {
  pictures_.push_back(Picture{std::move(title), std::move(file), lines_.size()});
}

bool Album::writeIndex(std::string* error) const {
  std::string path = directory_ + "/index.html";
  std::ofstream out(path);
  out << kHead;
  size_t previous = 0;
  for (const Picture& p : pictures_) {
    size_t from = std::max(previous, p.position > kBefore ? p.position - kBefore : 0);
    size_t to = std::min(lines_.size(), p.position + kAfter);
    out << "<section><a href=\"" << escaped(p.file) << "\"><img src=\"" << escaped(p.file)
        << "\" alt=\"" << escaped(p.title) << "\"></a><div><h2>" << escaped(p.title)
        << "</h2><pre>";
    for (size_t i = from; i < p.position; ++i) out << escaped(lines_[i]) << "\n";
    out << "<span class=\"after\">";
    for (size_t i = p.position; i < to; ++i) out << escaped(lines_[i]) << "\n";
    out << "</span></pre></div></section>\n";
    previous = p.position;
  }
  out << "</body></html>\n";
  if (out) return true;
  *error = "cannot write " + path;
  return false;
}

}  // namespace kv::sim::render
