// The device's drawing of captured views: where each look lands on the
// picture (frames in frames, bounds, transforms, alpha, corners, clipping),
// what labels, images, glyphs, passcode fields and blurs draw, the screen's
// layers, and the comparison that tells a changed picture from its reference.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "sim/render/album.h"
#include "sim/render/art.h"
#include "sim/render/compare.h"
#include "sim/render/painter.h"
#include "sim/render/scene.h"
#include "sim/render/screen.h"
#include "sim/render/text.h"

namespace kv::sim::render {
namespace {

using platform::Value;

struct Pixel {
  int r, g, b, a;
  bool operator==(const Pixel& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};
std::ostream& operator<<(std::ostream& out, const Pixel& p) {
  return out << "(" << p.r << "," << p.g << "," << p.b << "," << p.a << ")";
}
constexpr Pixel kWhite{255, 255, 255, 255}, kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255};

// The pixel at (x, y) of a surface, unpremultiplied enough for opaque ones.
Pixel pixelAt(cairo_surface_t* s, int x, int y) {
  cairo_surface_flush(s);
  const unsigned char* row = cairo_image_surface_get_data(s) +
                             static_cast<ptrdiff_t>(y) * cairo_image_surface_get_stride(s);
  uint32_t v = reinterpret_cast<const uint32_t*>(row)[x];
  return Pixel{static_cast<int>((v >> 16) & 0xff), static_cast<int>((v >> 8) & 0xff),
               static_cast<int>(v & 0xff), static_cast<int>(v >> 24)};
}

Value nums(std::initializer_list<double> v) {
  Value::Array a;
  for (double d : v) a.push_back(Value::real(d));
  return Value::array(std::move(a));
}

Value node(std::initializer_list<double> frame, Value::Dictionary more = {}) {
  more[key::kFrame] = nums(frame);
  return Value::dictionary(std::move(more));
}

Value withChildren(Value parent, std::vector<Value> children) {
  Value::Dictionary d = parent.asDictionary();
  d[key::kChildren] = Value::array(std::move(children));
  return Value::dictionary(std::move(d));
}

const PathMap kSamePath = [](const std::string& p) { return p; };

// A white canvas with `n` drawn on it.
Canvas painted(const Value& n, double width = 100, double height = 100, double scale = 1) {
  Canvas c(width, height, scale);
  cairo_set_source_rgb(c.cr(), 1, 1, 1);
  cairo_paint(c.cr());
  paintNode(c, n, kSamePath);
  return c;
}

Value red() {
  return nums({1, 0, 0, 1});
}
Value blue() {
  return nums({0, 0, 1, 1});
}

// Pixels in the box whose colour is close to `want`.
long countNear(cairo_surface_t* s, int x0, int y0, int x1, int y1, Pixel want) {
  long n = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) {
      Pixel p = pixelAt(s, x, y);
      if (std::abs(p.r - want.r) < 60 && std::abs(p.g - want.g) < 60 && std::abs(p.b - want.b) < 60)
        ++n;
    }
  }
  return n;
}

TEST(RenderGeometry, FramesBoundsAndTransformsPlaceWhatViewsDraw) {
  // A background fills its frame exactly.
  Canvas plain = painted(node({10, 20, 30, 40}, {{key::kBackground, red()}}));
  EXPECT_EQ(pixelAt(plain.surface(), 10, 20), kRed);
  EXPECT_EQ(pixelAt(plain.surface(), 39, 59), kRed);
  EXPECT_EQ(pixelAt(plain.surface(), 9, 20), kWhite);
  EXPECT_EQ(pixelAt(plain.surface(), 40, 20), kWhite);
  EXPECT_EQ(pixelAt(plain.surface(), 10, 60), kWhite);

  // A subview stands in its superview's frame, shifted by the bounds origin.
  Value parent = node({10, 10, 80, 80}, {{key::kBounds, nums({5, 0})}});
  Canvas nested =
      painted(withChildren(parent, {node({20, 30, 10, 10}, {{key::kBackground, red()}})}));
  EXPECT_EQ(pixelAt(nested.surface(), 25, 40), kRed) << "10 + 20 - 5";
  EXPECT_EQ(pixelAt(nested.surface(), 34, 49), kRed);
  EXPECT_EQ(pixelAt(nested.surface(), 35, 40), kWhite);

  // A transform turns about the view's centre: twice the size, same centre.
  Canvas scaled = painted(node(
      {40, 40, 20, 20}, {{key::kBackground, red()}, {key::kTransform, nums({2, 0, 0, 2, 0, 0})}}));
  EXPECT_EQ(pixelAt(scaled.surface(), 31, 31), kRed);
  EXPECT_EQ(pixelAt(scaled.surface(), 68, 68), kRed);
  EXPECT_EQ(pixelAt(scaled.surface(), 29, 50), kWhite);
  // A quarter turn stands a bar up; a translation moves it.
  Canvas turned = painted(node(
      {30, 45, 40, 10}, {{key::kBackground, red()}, {key::kTransform, nums({0, 1, -1, 0, 0, 0})}}));
  EXPECT_EQ(pixelAt(turned.surface(), 50, 32), kRed);
  EXPECT_EQ(pixelAt(turned.surface(), 32, 50), kWhite);
  Canvas moved = painted(node(
      {0, 0, 10, 10}, {{key::kBackground, red()}, {key::kTransform, nums({1, 0, 0, 1, 50, 0})}}));
  EXPECT_EQ(pixelAt(moved.surface(), 55, 5), kRed);
  EXPECT_EQ(pixelAt(moved.surface(), 5, 5), kWhite);

  // A node without a frame draws nothing.
  Canvas none = painted(Value::dictionary({{key::kBackground, red()}}));
  EXPECT_EQ(pixelAt(none.surface(), 0, 0), kWhite);
}

TEST(RenderGeometry, AlphaCornersAndClipping) {
  // Half alpha lets half the white through; the subview shares it once.
  Value faded = withChildren(
      node({0, 0, 50, 50}, {{key::kBackground, red()}, {key::kAlpha, Value::real(0.5)}}),
      {node({0, 0, 25, 25}, {{key::kBackground, red()}})});
  Canvas c = painted(faded);
  Pixel half = pixelAt(c.surface(), 40, 40), overlap = pixelAt(c.surface(), 10, 10);
  EXPECT_NEAR(half.g, 128, 2);
  EXPECT_EQ(half, overlap) << "the group is faded as one";

  // A corner radius leaves the corner out; clipping cuts what sticks out.
  Value rounded =
      node({10, 10, 40, 40}, {{key::kBackground, red()}, {key::kCorner, Value::real(12)}});
  Canvas r = painted(rounded);
  EXPECT_EQ(pixelAt(r.surface(), 11, 11), kWhite);
  EXPECT_EQ(pixelAt(r.surface(), 30, 11), kRed);
  Value child = node({30, 30, 40, 40}, {{key::kBackground, blue()}});
  Canvas loose = painted(withChildren(node({0, 0, 50, 50}), {child}));
  EXPECT_EQ(pixelAt(loose.surface(), 60, 60), kBlue);
  Canvas clipped =
      painted(withChildren(node({0, 0, 50, 50}, {{key::kClips, Value::boolean(true)}}), {child}));
  EXPECT_EQ(pixelAt(clipped.surface(), 60, 60), kWhite);
  EXPECT_EQ(pixelAt(clipped.surface(), 40, 40), kBlue);
}

TEST(RenderText, LinesBreakAsALabelsDo) {
  Canvas c(10, 10, 1);
  TextStyle style;
  style.size = 13;
  style.lines = 0;
  EXPECT_EQ(breakLines(c.cr(), "\n\nAuthenticate", style, 200),
            (std::vector<std::string>{"", "", "Authenticate"}));
  auto wrapped =
      breakLines(c.cr(), "Not recognised. Authenticate with your fingerprint", style, 238);
  ASSERT_EQ(wrapped.size(), 2u);
  EXPECT_EQ(wrapped[0] + " " + wrapped[1], "Not recognised. Authenticate with your fingerprint");
  auto split = breakLines(c.cr(), "Supercalifragilistic", style, 40);
  EXPECT_GT(split.size(), 2u);
  std::string joined;
  for (const auto& s : split) joined += s;
  EXPECT_EQ(joined, "Supercalifragilistic") << "a long word is cut, nothing lost";
  style.lines = 1;
  auto cut = breakLines(c.cr(), "one two three four five six", style, 60);
  ASSERT_EQ(cut.size(), 1u);
  EXPECT_EQ(cut[0].substr(cut[0].size() - 3), "\xe2\x80\xa6") << cut[0];
}

TEST(RenderText, LabelsDrawTheirTextInColourAndAlignment) {
  auto label = [](int align) {
    return node({0, 0, 200, 30},
                {{key::kText, Value::dictionary({{key::kString, Value::string("Messages")},
                                                 {key::kSize, Value::real(17)},
                                                 {key::kWeight, Value::string("bold")},
                                                 {key::kColor, red()},
                                                 {key::kAlign, Value::integer(align)},
                                                 {key::kLines, Value::integer(1)}})}});
  };
  auto leftmostInk = [](const Canvas& c) {
    for (int x = 0; x < 200; ++x) {
      for (int y = 0; y < 30; ++y) {
        if (pixelAt(c.surface(), x, y) != kWhite) return x;
      }
    }
    return -1;
  };
  Canvas left = painted(label(0), 200, 30), centred = painted(label(1), 200, 30),
         right = painted(label(2), 200, 30);
  EXPECT_LT(leftmostInk(left), 3);
  EXPECT_GT(leftmostInk(centred), 40);
  EXPECT_GT(leftmostInk(right), leftmostInk(centred));
  EXPECT_GT(countNear(left.surface(), 0, 0, 200, 30, kRed), 100) << "bold red ink";
  EXPECT_EQ(countNear(left.surface(), 0, 0, 200, 30, kBlue), 0);
}

TEST(RenderGlyph, EachStateShowsItsShapeInItsColour) {
  EXPECT_EQ(glyphLookFor(0).shape, GlyphShape::kFingerprint);
  EXPECT_FALSE(glyphLookFor(0).primary);
  EXPECT_TRUE(glyphLookFor(1).primary);
  EXPECT_EQ(glyphLookFor(4).shape, GlyphShape::kFace);
  EXPECT_FALSE(glyphLookFor(4).primary);
  EXPECT_EQ(glyphLookFor(5).shape, GlyphShape::kFace);
  EXPECT_TRUE(glyphLookFor(5).primary);
  for (long success : {6, 7, 11, 12}) EXPECT_EQ(glyphLookFor(success).shape, GlyphShape::kTick);
  EXPECT_EQ(glyphLookFor(99).shape, GlyphShape::kFingerprint) << "an unknown state idles";

  auto glyph = [](long state) {
    return node({10, 10, 63, 63},
                {{key::kGlyph, Value::dictionary({{key::kState, Value::integer(state)},
                                                  {key::kPrimary, red()},
                                                  {key::kSecondary, blue()}})}});
  };
  Canvas idle = painted(glyph(0)), scanning = painted(glyph(1)), face = painted(glyph(2));
  EXPECT_GT(countNear(idle.surface(), 0, 0, 100, 100, kBlue), 50);
  EXPECT_EQ(countNear(idle.surface(), 0, 0, 100, 100, kRed), 0);
  EXPECT_GT(countNear(scanning.surface(), 0, 0, 100, 100, kRed), 50);
  EXPECT_EQ(countNear(scanning.surface(), 0, 0, 100, 100, kBlue), 0);
  Difference shapes = compareSurfaces(idle.surface(), face.surface());
  EXPECT_FALSE(shapes.matches()) << "the face is not the fingerprint";
  // The shape stays inside the glyph's frame.
  EXPECT_EQ(countNear(scanning.surface(), 0, 0, 100, 9, kRed), 0);
  EXPECT_EQ(countNear(scanning.surface(), 0, 74, 100, 100, kRed), 0);
}

TEST(RenderPasscode, TypedFieldsShowDotsAndFreeOnesDashes) {
  auto field = [](long filled) {
    return node({0, 0, 176, 33.4},
                {{key::kPasscode, Value::dictionary({{key::kFields, Value::integer(4)},
                                                     {key::kFilled, Value::integer(filled)}})}});
  };
  Canvas c = painted(field(2), 176, 34);
  Pixel ink{28, 28, 31, 255};
  long cells[4];
  for (int i = 0; i < 4; ++i) cells[i] = countNear(c.surface(), i * 44, 0, i * 44 + 44, 34, ink);
  EXPECT_EQ(cells[0], cells[1]);
  EXPECT_EQ(cells[2], cells[3]);
  EXPECT_GT(cells[0], 2 * cells[2]) << "a dot holds more ink than a dash";
  EXPECT_GT(cells[2], 0) << "a free field still shows";
  Canvas none = painted(field(0), 176, 34), all = painted(field(4), 176, 34);
  EXPECT_FALSE(compareSurfaces(none.surface(), all.surface()).matches());
}

TEST(RenderBlur, ABlurViewShowsWhatLiesBeneathBlurredAndTinted) {
  Canvas c(100, 100, 1);
  cairo_set_source_rgb(c.cr(), 1, 1, 1);
  cairo_paint(c.cr());
  cairo_rectangle(c.cr(), 0, 0, 50, 100);
  cairo_set_source_rgb(c.cr(), 0, 0, 0);
  cairo_fill(c.cr());
  paintNode(
      c,
      node({20, 20, 60, 60}, {{key::kBlur, Value::dictionary({{key::kStyle, Value::integer(2)}})}}),
      kSamePath);
  Pixel edge = pixelAt(c.surface(), 50, 50);
  EXPECT_GT(edge.r, 20);
  EXPECT_LT(edge.r, 200) << "the black and white edge is blurred";
  Pixel darkSide = pixelAt(c.surface(), 22, 50), lightSide = pixelAt(c.surface(), 78, 50);
  EXPECT_LT(darkSide.r, lightSide.r);
  EXPECT_LT(lightSide.r, 200) << "the dark style darkens";
  EXPECT_EQ(pixelAt(c.surface(), 90, 50), kWhite) << "nothing outside the view changes";
  EXPECT_EQ(pixelAt(c.surface(), 10, 50), (Pixel{0, 0, 0, 255}));
}

class RenderFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    char dir[] = "/tmp/render-test-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    dir_ = dir;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string solid(const std::string& name, double r, double g, double b) {
    Canvas c(2, 2, 1);
    cairo_set_source_rgb(c.cr(), r, g, b);
    cairo_paint(c.cr());
    std::string path = dir_ + "/" + name, error;
    EXPECT_TRUE(c.writePng(path, &error)) << error;
    return path;
  }
  std::string dir_;
};

TEST_F(RenderFiles, ImagesFillTheirViewFromTheSharpestFile) {
  std::string path = solid("ring.png", 1, 0, 0);
  Value view = node({10, 10, 20, 20}, {{key::kImage, Value::string("/device/ring.png")}});
  PathMap map = [&](const std::string& devicePath) {
    return devicePath == "/device/ring.png" ? path : std::string();
  };
  Canvas one(50, 50, 1);
  paintNode(one, view, map);
  EXPECT_EQ(pixelAt(one.surface(), 15, 15), kRed);
  EXPECT_EQ(pixelAt(one.surface(), 29, 29), kRed);
  EXPECT_EQ(pixelAt(one.surface(), 31, 31).a, 0);

  solid("ring@2x.png", 0, 0, 1);
  Canvas two(50, 50, 2);
  paintNode(two, view, map);
  EXPECT_EQ(pixelAt(two.surface(), 30, 30), kBlue) << "UIKit takes @2x on a 2x screen";

  Canvas missing(50, 50, 1);
  paintNode(missing, node({0, 0, 50, 50}, {{key::kImage, Value::string("/device/none.png")}}), map);
  EXPECT_EQ(pixelAt(missing.surface(), 25, 25).a, 0) << "no file, no image";
}

TEST_F(RenderFiles, ComparisonToleratesAFewPixelsButNotAChangedLook) {
  auto square = [](double x, double r) {
    Canvas c(100, 100, 1);
    cairo_set_source_rgb(c.cr(), 1, 1, 1);
    cairo_paint(c.cr());
    cairo_rectangle(c.cr(), x, 40, 20, 20);
    cairo_set_source_rgb(c.cr(), r, 0, 1 - r);
    cairo_fill(c.cr());
    return c;
  };
  Canvas a = square(40, 1), same = square(40, 1), moved = square(44, 1), recoloured = square(40, 0);
  EXPECT_TRUE(compareSurfaces(a.surface(), same.surface()).matches());
  EXPECT_EQ(compareSurfaces(a.surface(), same.surface()).describe(), "no pixel differs");

  Difference m = compareSurfaces(moved.surface(), a.surface());
  EXPECT_FALSE(m.matches());
  EXPECT_EQ(m.pixels, 2 * 4 * 20);
  EXPECT_EQ(m.describe(), "160 pixels differ, in x 40..63, y 40..59");
  EXPECT_FALSE(compareSurfaces(recoloured.surface(), a.surface()).matches());

  // A few stray pixels, or a slight change of shade, pass.
  Canvas stray = square(40, 1);
  cairo_rectangle(stray.cr(), 0, 0, 4, 4);
  cairo_set_source_rgb(stray.cr(), 0, 0, 0);
  cairo_fill(stray.cr());
  EXPECT_EQ(compareSurfaces(stray.surface(), a.surface()).pixels, 16);
  EXPECT_TRUE(compareSurfaces(stray.surface(), a.surface()).matches());
  Canvas shade = square(40, 0.9);
  EXPECT_TRUE(compareSurfaces(shade.surface(), a.surface()).matches());

  Canvas small(50, 50, 1);
  EXPECT_FALSE(compareSurfaces(small.surface(), a.surface()).matches());
  EXPECT_EQ(compareSurfaces(small.surface(), a.surface()).describe(), "the pictures' sizes differ");

  std::string error, diff = dir_ + "/diff.png";
  ASSERT_TRUE(writeDifference(moved.surface(), a.surface(), diff, &error)) << error;
  auto read = readPng(diff, &error);
  ASSERT_TRUE(read) << error;
  EXPECT_EQ(pixelAt(read->get(), 62, 50), kRed);
  EXPECT_NE(pixelAt(read->get(), 50, 50), kRed);
  EXPECT_FALSE(writeDifference(small.surface(), a.surface(), diff, &error));
}

TEST_F(RenderFiles, TheAlbumShowsEachPictureBesideItsTimeline) {
  EXPECT_EQ(Album::fileName("tests/scenarios/core_face.scn", 12, "not recognised"),
            "core_face-12-not_recognised.png");
  EXPECT_EQ(Album::fileName("tour", 3, "a/b<c>"), "tour-3-a_b_c_.png");
  Album album(dir_);
  for (int i = 0; i < 40; ++i) album.addLine("line " + std::to_string(i));
  album.addPicture("first <one>", "first.png");
  album.addLine("after first");
  album.addPicture("second", "second.png");
  album.addLine("after second");
  std::string error;
  ASSERT_TRUE(album.writeIndex(&error)) << error;
  std::ifstream in(dir_ + "/index.html");
  std::string html((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(html.find("first &lt;one&gt;"), std::string::npos) << "titles are escaped";
  EXPECT_EQ(html.find("line 9\n"), std::string::npos) << "at most the last 30 lines before";
  EXPECT_NE(html.find("line 10\n"), std::string::npos);
  EXPECT_LT(html.find("first.png"), html.find("second.png"));
  auto second = html.find("<img src=\"second.png\"");
  ASSERT_NE(second, std::string::npos);
  EXPECT_EQ(html.find("line 39", second), std::string::npos) << "the second starts after the first";
  EXPECT_NE(html.find("after first", second), std::string::npos);
  EXPECT_NE(html.find("<span class=\"after\">after second"), std::string::npos);
  EXPECT_FALSE(Album("/nonexistent/dir").writeIndex(&error));
}

TEST(RenderScreen, LayersAndTheDevicesOwnScreens) {
  Clock clock = clockAt(531219600 + 978307200 + 125);
  EXPECT_EQ(clock.time, "9:02");
  EXPECT_EQ(clock.date, "Wednesday, 1 November");

  auto window = [](std::vector<Value> views) {
    return withChildren(node({0, 0, 100, 100}), std::move(views));
  };
  Value frontApp = Value::dictionary(
      {{key::kWindows,
        Value::array({window({node({0, 0, 100, 100}, {{key::kBackground, red()}})})})}});
  Value springBoard = Value::dictionary({
      {key::kScreen, Value::dictionary({{key::kWidth, Value::real(100)},
                                        {key::kHeight, Value::real(100)},
                                        {key::kScale, Value::real(2)}})},
      {key::kWindows,
       Value::array({window({node({40, 40, 20, 20}, {{key::kBackground, blue()}})})})},
      {key::kSurface, Value::dictionary({{key::kFront, Value::string("com.example")},
                                         {key::kFrontName, Value::string("Example")}})},
      {key::kKeyboard,
       Value::dictionary({{key::kFrame, nums({0, 80, 100, 20})}, {key::kType, Value::integer(4)}})},
  });
  Canvas screen = paintScreen(Screen{springBoard, frontApp, clock}, 0, kSamePath);
  EXPECT_EQ(screen.pixelWidth(), 200) << "the screen's own scale";
  EXPECT_EQ(pixelAt(screen.surface(), 100, 100), kBlue) << "SpringBoard's windows on top";
  EXPECT_EQ(pixelAt(screen.surface(), 20, 100), kRed) << "the front app's beneath";
  EXPECT_EQ(countNear(screen.surface(), 0, 160, 200, 200, kRed), 0) << "the keyboard on top of all";

  Value::Dictionary dark = springBoard.asDictionary();
  dark[key::kSurface] = Value::dictionary({{key::kScreenOn, Value::boolean(false)}});
  Canvas off = paintScreen(Screen{Value::dictionary(dark), frontApp, clock}, 1, kSamePath);
  EXPECT_EQ(countNear(off.surface(), 0, 0, 100, 100, Pixel{0, 0, 0, 255}), 100 * 100)
      << "a dark screen shows nothing";

  Value::Dictionary locked = springBoard.asDictionary();
  locked[key::kSurface] = Value::dictionary({{key::kLocked, Value::boolean(true)}});
  locked[key::kWindows] = Value::array({});
  locked.erase(key::kKeyboard);
  Canvas lock = paintScreen(Screen{Value::dictionary(locked), Value(), clock}, 1, kSamePath);
  Canvas later =
      paintScreen(Screen{Value::dictionary(locked), Value(), clockAt(531219600 + 978307200 + 3600)},
                  1, kSamePath);
  EXPECT_FALSE(compareSurfaces(lock.surface(), later.surface()).matches())
      << "the lock screen shows the time";
}

TEST(RenderArt, TheSettingsBundlesImagesAreDrawnAtTheirScale) {
  for (const char* name : {"circle-white", "circle-black", "circle-gold", "thumb-white",
                           "thumb-black", "thumb-red", "Icon"}) {
    std::string png = bundleImagePng(name, 2);
    ASSERT_GT(png.size(), 8u) << name;
    EXPECT_EQ(png.substr(1, 3), "PNG") << name;
  }
  EXPECT_EQ(bundleImagePng("thumb-green", 2), "");
  char path[] = "/tmp/render-art-XXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  std::string png = bundleImagePng("circle-gold", 2);
  ASSERT_EQ(write(fd, png.data(), png.size()), static_cast<ssize_t>(png.size()));
  close(fd);
  std::string error;
  auto ring = readPng(path, &error);
  std::remove(path);
  ASSERT_TRUE(ring) << error;
  EXPECT_EQ(cairo_image_surface_get_width(ring->get()), 126);
  EXPECT_EQ(pixelAt(ring->get(), 63, 63).a, 0) << "the ring is open in the middle";
  Pixel rim = pixelAt(ring->get(), 63, 2);
  EXPECT_EQ(rim.a, 255);
  EXPECT_GT(rim.r, rim.b) << "gold";
}

TEST(RenderText, TheFontIsThere) {
  std::string error;
  EXPECT_TRUE(fontsAvailable(&error)) << error;
}

}  // namespace
}  // namespace kv::sim::render
