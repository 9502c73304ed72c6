// Text in the pinned font through FreeType and cairo, unhinted so that the
// same text lands on the same pixels on every machine.
#include "sim/render/text.h"

#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdio>
#include <cstdlib>

namespace kv::sim::render {

namespace {

constexpr const char* kFontFiles[] = {
    KAVELIN_FONT_DIR "/Inter-Regular.otf",
    KAVELIN_FONT_DIR "/Inter-SemiBold.otf",
    KAVELIN_FONT_DIR "/Inter-Bold.otf",
};
constexpr double kLineSpacing = 1.21;  // the font's ascender plus descender, in ems
constexpr double kAscent = 0.97;
constexpr const char* kEllipsis = "\xe2\x80\xa6";

// The three faces, loaded once for the process and kept to its end.
struct Faces {
  FT_Library library = nullptr;
  cairo_font_face_t* faces[3] = {};
  std::string error;
};

const Faces& faces() {
  static const Faces* loaded = [] {
    auto* f = new Faces();
    if (FT_Init_FreeType(&f->library) != 0) {
      f->error = "FreeType did not start";
      return f;
    }
    for (int i = 0; i < 3; ++i) {
      FT_Face face = nullptr;
      if (FT_New_Face(f->library, kFontFiles[i], 0, &face) != 0) {
        f->error = std::string("font ") + kFontFiles[i] +
                   " missing (Debian's fonts-inter; scripts/setup.sh installs it)";
        return f;
      }
      f->faces[i] = cairo_ft_font_face_create_for_ft_face(face, FT_LOAD_NO_HINTING);
    }
    return f;
  }();
  return *loaded;
}

void useFont(cairo_t* cr, const TextStyle& style) {
  const Faces& f = faces();
  if (!f.error.empty()) {
    std::fprintf(stderr, "kavelin-sim pictures: %s\n", f.error.c_str());
    std::abort();
  }
  cairo_set_font_face(cr, f.faces[static_cast<int>(style.weight)]);
  cairo_set_font_size(cr, style.size);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_set_font_options(cr, options);
  cairo_font_options_destroy(options);
}

double widthOf(cairo_t* cr, const std::string& text) {
  cairo_text_extents_t extents;
  cairo_text_extents(cr, text.c_str(), &extents);
  return extents.x_advance;
}

// The length of the longest start of `word` (whole UTF-8 characters, at
// least one) that fits in `width`.
size_t fittingPrefix(cairo_t* cr, const std::string& word, double width) {
  size_t best = 0;
  for (size_t i = 1; i <= word.size(); ++i) {
    if (i < word.size() && (static_cast<unsigned char>(word[i]) & 0xc0) == 0x80) continue;
    if (best != 0 && widthOf(cr, word.substr(0, i)) > width) break;
    best = i;
  }
  return best;
}

// One paragraph broken between words.
void breakParagraph(cairo_t* cr, const std::string& paragraph, double width,
                    std::vector<std::string>& out) {
  std::string line;
  size_t at = 0;
  while (at <= paragraph.size()) {
    size_t space = paragraph.find(' ', at);
    std::string word =
        paragraph.substr(at, space == std::string::npos ? std::string::npos : space - at);
    std::string candidate = line.empty() ? word : line + " " + word;
    if (widthOf(cr, candidate) <= width || (line.empty() && word.empty())) {
      line = candidate;
    } else if (!line.empty()) {
      out.push_back(line);
      line.clear();
      continue;  // the word starts the next line
    } else {
      size_t cut = fittingPrefix(cr, word, width);
      out.push_back(word.substr(0, cut));
      at += cut;
      continue;
    }
    if (space == std::string::npos) break;
    at = space + 1;
  }
  out.push_back(line);
}

}  // namespace

Weight weightNamed(const std::string& name) {
  if (name == "semibold") return Weight::kSemibold;
  if (name == "bold") return Weight::kBold;
  return Weight::kRegular;
}

bool fontsAvailable(std::string* error) {
  *error = faces().error;
  return error->empty();
}

double lineHeight(double size) {
  return size * kLineSpacing;
}

std::vector<std::string> breakLines(cairo_t* cr, const std::string& text, const TextStyle& style,
                                    double width) {
  cairo_save(cr);
  useFont(cr, style);
  std::vector<std::string> lines;
  size_t start = 0;
  for (;;) {
    size_t end = text.find('\n', start);
    breakParagraph(cr,
                   text.substr(start, end == std::string::npos ? std::string::npos : end - start),
                   width, lines);
    if (end == std::string::npos) break;
    start = end + 1;
  }
  if (style.lines > 0 && lines.size() > static_cast<size_t>(style.lines)) {
    lines.resize(static_cast<size_t>(style.lines));
    std::string& last = lines.back();
    while (!last.empty() && widthOf(cr, last + kEllipsis) > width) {
      do last.pop_back();
      while (!last.empty() && (static_cast<unsigned char>(last.back()) & 0xc0) == 0x80);
    }
    last += kEllipsis;
  }
  cairo_restore(cr);
  return lines;
}

void drawText(cairo_t* cr, const std::string& text, const TextStyle& style, double x, double y,
              double width, double height) {
  std::vector<std::string> lines = breakLines(cr, text, style, width);
  double line = lineHeight(style.size);
  double top = y + (height - line * static_cast<double>(lines.size())) / 2;
  cairo_save(cr);
  useFont(cr, style);
  cairo_set_source_rgba(cr, style.color[0], style.color[1], style.color[2], style.color[3]);
  for (size_t i = 0; i < lines.size(); ++i) {
    double w = widthOf(cr, lines[i]);
    double left = style.align == 1 ? x + (width - w) / 2 : style.align == 2 ? x + width - w : x;
    cairo_move_to(cr, left, top + line * static_cast<double>(i) + kAscent * style.size);
    cairo_show_text(cr, lines[i].c_str());
  }
  cairo_restore(cr);
}

}  // namespace kv::sim::render
