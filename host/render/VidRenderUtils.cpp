#include "host/render/VidRenderUtils.h"

// Map
//   pixels ........ colour mixing on premultiplied ARGB
//   sources ....... test cards, picture files, imported images, mattes
//   effects ....... mix, wipe, picture in picture, colour correction
//   walk .......... the recursive render of a graph position
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <set>
#include <unordered_map>

#include <cairo.h>

#include "host/edit/GraphNodeKinds.h"
#include "host/notify/Log.h"
#include "host/render/ImageCache.h"
#include "host/render/MaterialManager.h"
#include "host/render/StillsCache.h"

namespace Render {
namespace {

std::atomic<unsigned> rendered{0};

using Image = Ux::Ptr<UxImage>;

Image blank(int w, int h) {
  Image image(new UxImage(w, h));
  image->fill(Colour(0, 0, 0, 1));
  return image;
}

// -- pixels -------------------------------------------------------------------

struct Rgba {
  double r, g, b, a;
};
Rgba unpack(uint32_t p) {
  return {((p >> 16) & 255) / 255.0, ((p >> 8) & 255) / 255.0, (p & 255) / 255.0, ((p >> 24) & 255) / 255.0};
}
uint32_t pack(const Rgba& c) {
  auto byte = [](double v) { return static_cast<uint32_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); };
  return byte(c.a) << 24 | byte(c.r) << 16 | byte(c.g) << 8 | byte(c.b);
}

// -- sources ------------------------------------------------------------------

Image testCard(const std::string& pattern, int w, int h) {
  Image image(new UxImage(w, h));
  if (pattern == "grid") {
    image->fill(Colour(0.2, 0.2, 0.22));
    const int step = std::max(2, w / 16);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (x % step == 0 || y % step == 0) image->setPixel(x, y, Colour(0.85, 0.85, 0.85));
  } else if (pattern == "ramp") {
    for (int x = 0; x < w; ++x) {
      const double v = w > 1 ? double(x) / (w - 1) : 0;
      for (int y = 0; y < h; ++y) image->setPixel(x, y, Colour(v, v, v));
    }
  } else if (pattern.starts_with("solid:")) {
    double c[3] = {0, 0, 0};
    const char* p = pattern.c_str() + 6;
    for (double& v : c) {
      char* end = nullptr;
      v = std::clamp(std::strtod(p, &end), 0.0, 1.0);
      p = *end == ',' ? end + 1 : end;
    }
    image->fill(Colour(c[0], c[1], c[2]));
  } else {
    // Colour bars, left to right; anything unknown shows bars too.
    static const Colour bars[] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}, {0, 0, 1}};
    for (int x = 0; x < w; ++x) {
      const Colour& c = bars[std::min(6, x * 7 / std::max(1, w))];
      for (int y = 0; y < h; ++y) image->setPixel(x, y, c);
    }
  }
  return image;
}

// Draws a picture into a box of a frame (x, y from the top-left, in pixels).
void paste(UxImage& frame, const UxImage& picture, double x, double y, double w, double h) {
  if (w <= 0 || h <= 0 || picture.width() == 0 || picture.height() == 0) return;
  cairo_surface_t* dst =
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(frame.data()), CAIRO_FORMAT_ARGB32,
                                          frame.width(), frame.height(), frame.stride());
  cairo_surface_t* src =
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(picture.data())),
                                          CAIRO_FORMAT_ARGB32, picture.width(), picture.height(), picture.stride());
  cairo_t* cr = cairo_create(dst);
  cairo_translate(cr, x, y);
  cairo_scale(cr, w / picture.width(), h / picture.height());
  cairo_set_source_surface(cr, src, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(dst);
  cairo_surface_destroy(src);
  cairo_surface_destroy(dst);
}

// A picture file (square pixels) placed into a frame of `aspect` (the
// frame's display shape) as the picture-shape settings say, over a ground:
// black for material, clear for an imported image so that what it is laid
// over shows through its transparent parts.
Image fitted(const Image& picture, int w, int h, double aspect, const ARCSettings& arc, bool clearGround = false) {
  Image frame = clearGround ? Image(new UxImage(w, h)) : blank(w, h);
  if (!picture || picture->width() == 0 || picture->height() == 0) return frame;
  if (arc.fit == ARCSettings::stretch) {
    paste(*frame, *picture, 0, 0, w, h);
    return frame;
  }
  // Shapes compared on screen; the frame's pixels need not be square.
  const double pictureAspect = double(picture->width()) / picture->height();
  const bool fullWidth = (pictureAspect > aspect) == (arc.fit == ARCSettings::letterbox);
  const double pw = fullWidth ? w : w * pictureAspect / aspect;
  const double ph = fullWidth ? h * aspect / pictureAspect : h;
  paste(*frame, *picture, (w - pw) / 2, (h - ph) / 2, pw, ph);
  return frame;
}

Image matte(const ComplexBackgroundEffect& bg, double t, int w, int h) {
  Image image(new UxImage(w, h));
  if (bg.isFlat()) {
    image->fill(bg.getColour(t, 0));
    return image;
  }
  // From the first colour at the bottom to the second at the top; rows run top first.
  const Colour bottom = bg.getColour(t, 0), top = bg.getColour(t, 1);
  for (int y = 0; y < h; ++y) {
    const double k = h > 1 ? double(h - 1 - y) / (h - 1) : 0;
    const Colour c(bottom.r + (top.r - bottom.r) * k, bottom.g + (top.g - bottom.g) * k,
                   bottom.b + (top.b - bottom.b) * k);
    for (int x = 0; x < w; ++x) image->setPixel(x, y, c);
  }
  return image;
}

// -- effects ------------------------------------------------------------------

Image mix(const Image& a, const Image& b, double amount) {
  amount = std::clamp(amount, 0.0, 1.0);
  Image out(new UxImage(a->width(), a->height()));
  const std::size_t n = static_cast<std::size_t>(a->width()) * a->height();
  for (std::size_t i = 0; i < n; ++i) {
    const Rgba p = unpack(a->data()[i]), q = unpack(b->data()[i]);
    out->data()[i] = pack({p.r + (q.r - p.r) * amount, p.g + (q.g - p.g) * amount, p.b + (q.b - p.b) * amount,
                           p.a + (q.a - p.a) * amount});
  }
  return out;
}

Image wipe(const Image& a, const Image& b, double position) {
  Image out(new UxImage(a->width(), a->height()));
  const int split = static_cast<int>(std::lround(std::clamp(position, 0.0, 1.0) * a->width()));
  for (int y = 0; y < a->height(); ++y)
    for (int x = 0; x < a->width(); ++x) out->row(y)[x] = (x < split ? a : b)->row(y)[x];
  return out;
}

// The foreground scaled and centred at (x, y), fractions of the frame with y up.
Image pictureInPicture(const Image& fg, const Image& bg, double x, double y, double scale) {
  Image out(new UxImage(bg->width(), bg->height()));
  std::copy_n(bg->data(), static_cast<std::size_t>(bg->width()) * bg->height(), out->data());
  scale = std::clamp(scale, 0.0, 1.0);
  const double w = fg->width() * scale, h = fg->height() * scale;
  paste(*out, *fg, x * bg->width() - w / 2, (1 - y) * bg->height() - h / 2, w, h);
  return out;
}

Image colourCorrect(const Image& in, const std::vector<double>& gain) {
  const double gr = gain.size() > 0 ? gain[0] : 1, gg = gain.size() > 1 ? gain[1] : gr,
               gb = gain.size() > 2 ? gain[2] : gr;
  Image out(new UxImage(in->width(), in->height()));
  const std::size_t n = static_cast<std::size_t>(in->width()) * in->height();
  for (std::size_t i = 0; i < n; ++i) {
    const Rgba p = unpack(in->data()[i]);
    out->data()[i] = pack({std::min(p.a, p.r * gr), std::min(p.a, p.g * gg), std::min(p.a, p.b * gb), p.a});
  }
  return out;
}

// The table maps colour levels, so a pixel that is not opaque is looked up
// without its opacity and premultiplied again.
void applyLUT(UxImage& image, const ViewLUT& lut) {
  const std::size_t n = static_cast<std::size_t>(image.width()) * image.height();
  for (std::size_t i = 0; i < n; ++i) {
    const uint32_t p = image.data()[i];
    const uint32_t a = p >> 24;
    if (a == 0) continue;
    auto level = [&](int channel, int shift) {
      uint32_t v = (p >> shift) & 255;
      if (a < 255) v = std::min<uint32_t>(255, (v * 255 + a / 2) / a);
      v = lut.table[static_cast<std::size_t>(channel)][v];
      return (a < 255 ? (v * a + 127) / 255 : v) << shift;
    };
    image.data()[i] = (p & 0xFF000000u) | level(0, 16) | level(1, 8) | level(2, 0);
  }
}

// -- walk ---------------------------------------------------------------------

// Inputs are followed this many steps down from the position rendered;
// deeper ones show black. Each step may hold a frame while its other inputs
// render, so the depth bounds the memory a still takes.
constexpr int maxInputDepth = 64;

// A node's picture depends on the node and the time, not on the path that
// reached it, so the walk keeps each picture it makes and a node shared by
// several inputs is rendered once (a chain of nodes each taking the same
// input twice costs its length, not two to that power). Two things do depend
// on the path, and the walk keeps them exact: a cycle shows black where it
// closes (graphs with a cycle are walked path by path, unremembered), and
// inputs deeper than maxInputDepth show black (a kept picture is reused only
// where its inputs stay within that depth).
class Walk {
public:
  explicit Walk(const RenderContext& context)
      : at_(context.iterator()), top_(at_.getDepth()), w_(context.format().width), h_(context.format().height),
        aspect_(context.format().aspect > 0 ? context.format().aspect : double(w_) / h_), arc_(context.arc()),
        remember_(!hasCycleBelow(at_)) {}

  Image node() {
    height_ = 0;
    lastCut_ = false;
    Ux::Ptr<FXGraphNodeBase> here = at_.getNode();
    if (!here) return blank(w_, h_);
    // A node already on the path above closes a cycle: it shows black there.
    for (int d = 0; d < at_.getDepth(); ++d)
      if (at_.getNode(d) == here) return blank(w_, h_);
    const int depth = at_.getDepth() - top_;
    if (remember_) {
      const auto kept = pictures_.find(here.get());
      if (kept != pictures_.end() && (kept->second.height == 0 || depth + kept->second.height < maxInputDepth)) {
        height_ = kept->second.height;
        return kept->second.picture;
      }
    }
    const int outerHeight = heightSoFar_;
    const bool outerCut = cutDeep_;
    heightSoFar_ = 0;
    cutDeep_ = false;
    Image picture = make(here);
    const int height = heightSoFar_;
    const bool cut = cutDeep_;
    heightSoFar_ = outerHeight;
    cutDeep_ = outerCut;
    // A picture cut short by the depth limit is this path's alone.
    if (remember_ && !cut) pictures_[here.get()] = Kept{picture, height};
    height_ = height;
    lastCut_ = cut;
    return picture;
  }

private:
  struct Kept {
    Image picture;
    int height; // the longest run of inputs below the node that it used
  };

  // Whether the graph under the iterator's node closes a cycle anywhere.
  static bool hasCycleBelow(EditGraphIterator at) {
    std::unordered_map<const FXGraphNodeBase*, bool> done; // false while on the path
    std::function<bool()> visit = [&]() {
      const Ux::Ptr<FXGraphNodeBase> n = at.getNode();
      if (!n) return false;
      const auto [it, fresh] = done.try_emplace(n.get(), false);
      if (!fresh) return !it->second;
      for (unsigned i = 0; i < n->getNumInputs(); ++i) {
        if (!at.moveToInput(static_cast<int>(i))) continue;
        const bool cycle = visit();
        at.moveBack();
        if (cycle) return true;
      }
      done[n.get()] = true;
      return false;
    };
    return at.isValid() && visit();
  }

  Image make(const Ux::Ptr<FXGraphNodeBase>& here) {
    const double t = at_.getTime();

    if (auto* m = dynamic_cast<MaterialUsageNode*>(here.get())) {
      if (m->getTrackType() != TrackType::video || m->getMedia() == MaterialUsageNode::Media::tone)
        return blank(w_, h_);
      if (m->getMedia() == MaterialUsageNode::Media::testCard) return testCard(m->getSource().str(), w_, h_);
      return fitted(ImageCache::loadImage(path(m->getSource().str()), nullptr, 0, 0), w_, h_, aspect_, arc_);
    }
    auto* effect = dynamic_cast<EffectInstance*>(here.get());
    if (!effect || effect->getTrackType() != TrackType::video) return blank(w_, h_);
    if (auto* image = dynamic_cast<ImageImportEffect*>(effect))
      return fitted(ImageCache::loadImage(MaterialManager::findFileForImageClip(*image, *at_.getEdit()), nullptr, 0, 0),
                    w_, h_, aspect_, arc_, true);
    if (auto* bg = dynamic_cast<ComplexBackgroundEffect*>(effect)) return matte(*bg, t, w_, h_);
    // A bypassed effect and a stand-in show what feeds them.
    if (!effect->isActive() || dynamic_cast<AliasedInputEffect*>(effect)) return input(0);

    const LightweightString<char> tag = effect->tagTypeId();
    if (tag == "mix") return mix(input(0), input(1), effect->param("amount", 0.5));
    if (tag == "wipe") return wipe(input(0), input(1), effect->param("position", 0.5));
    if (tag == "pip")
      return pictureInPicture(input(0), input(1), effect->param("x", 0.75), effect->param("y", 0.75),
                              effect->param("scale", 0.33));
    if (tag == "colourcorrect") return colourCorrect(input(0), effect->paramValues("gain"));
    return input(0);
  }

private:
  Image input(int i) {
    if (at_.getDepth() - top_ >= maxInputDepth) {
      if (!tooDeepTold_) debugPrintf("Still: inputs deeper than %d steps show black\n", maxInputDepth);
      tooDeepTold_ = true;
      cutDeep_ = true;
      return blank(w_, h_);
    }
    if (!at_.moveToInput(i)) return blank(w_, h_);
    Image picture = node();
    at_.moveBack();
    heightSoFar_ = std::max(heightSoFar_, height_ + 1);
    cutDeep_ = cutDeep_ || lastCut_;
    return picture;
  }
  std::string path(const std::string& file) const {
    if (file.empty() || file.front() == '/') return file;
    const std::string& folder = at_.getEdit()->getFolder();
    return folder.empty() ? file : folder + "/" + file;
  }

  EditGraphIterator at_;
  int top_; // the depth of the position rendered
  int w_, h_;
  double aspect_;
  ARCSettings arc_;
  bool tooDeepTold_ = false;
  bool remember_;
  std::unordered_map<const FXGraphNodeBase*, Kept> pictures_;
  int height_ = 0;       // of the node just made or found
  bool lastCut_ = false; // whether it met the depth limit
  int heightSoFar_ = 0;  // of the inputs of the node being made
  bool cutDeep_ = false; // whether the node being made met the depth limit
};

} // namespace

Ux::Ptr<UxImage> VidRenderUtils::renderStill(const RenderContext& context) {
  const VideoFormat& f = context.format();
  if (!f.valid() || f.width > DigitalVideoFormats::maxSide || f.height > DigitalVideoFormats::maxSide) return nullptr;
  ++rendered;
  Image picture =
      context.iterator().isValid() && context.iterator().getEdit() ? Walk(context).node() : blank(f.width, f.height);
  if (context.hasViewLUT()) applyLUT(*picture, context.viewLUT());
  return picture;
}

Ux::Ptr<UxImage> VidRenderUtils::cachedStill(const RenderContext& context) {
  StillsCache& cache = StillsCache::instance();
  if (Ux::Ptr<UxImage> still = cache.getStillImage(context)) return still;
  Ux::Ptr<UxImage> still = renderStill(context);
  cache.add(context, still);
  return still;
}

void VidRenderUtils::unRender(const CelEventPair& cel, bool everyFrame) {
  const ce_handle handle = cel.getEffectHandle();
  if (!handle.valid()) return;
  // A graph cel's graph, or the material a material cel shows.
  const IdStamp head = handle.id().valid() ? handle.id() : cel.getMaterialId();
  if (!head.valid()) return;
  if (everyFrame)
    StillsCache::instance().forgetGraph(handle.edit(), head);
  else
    StillsCache::instance().forgetGraph(handle.edit(), head, cel.editTime(), cel.endEditTime());
}

unsigned VidRenderUtils::stillsRendered() { return rendered.load(); }

} // namespace Render
