// The node kinds: rendered stills (effects and materials), imported images,
// flat colour mattes and aliased inputs; and the two helpers that the view
// uses to choose and describe them.
#include "graph_nodes/FXGraphViewNodeKinds.h"

#include <algorithm>

#include "graph_nodes/NodeView.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/ProjectDatabase.h"
#include "host/render/ImageCache.h"
#include "host/render/MaterialManager.h"
#include "host/render/RenderContext.h"
#include "host/render/StillsCache.h"
#include "host/render/VidRenderUtils.h"
#include "host/render/VideoFormats.h"
#include "host/ui/Glob.h"

namespace {

// Draws the picture into the box (view pixels) and reports the box as changed.
void renderInto(NodeView* view, const FXGraphViewNode::PixelBox& box, const Ux::Ptr<UxImage>& picture) {
  if (!view || !picture) return;
  CanvasRenderer renderer = view->glob().canvas().renderer();
  renderer.renderPrimitive(Glib::ImageDescription{box, UxImageWrapper::create(picture)});
  renderer.addModifiedArea(box);
}

} // namespace

// -- thumb nodes ------------------------------------------------------------------

FXGraphViewThumbNode::FXGraphViewThumbNode(NodeView* view, const EditGraphIterator& at) : FXGraphViewNode(view, at) {}

Ux::Ptr<UxImage> FXGraphViewThumbNode::updateCachedStill(EditGraphIterator at) {
  // The edit's picture format with the node's shape, rendered at the size of
  // the thumbnail box: the stills cache keeps one still per size, and a
  // full-frame render would be thrown away on a box a few dozen pixels wide.
  const EditPtr edit = at.getEdit() ? at.getEdit() : edit_;
  const VideoMetadata picture = edit ? edit->getVideoMetadata() : VideoMetadata();
  VideoFormat format{"edit", picture.width, picture.height, getAspectRatio()};
  if (thumbBox_.width() > 0 && thumbBox_.height() > 0) {
    format.width = thumbBox_.width();
    format.height = thumbBox_.height();
  }
  Render::StillsCache& cache = Render::StillsCache::instance();
  Ux::Ptr<UxImage> still = cache.getStillImage(Render::RenderContext(at, format));
  if (still) return still;
  // Bypassed effects are rendered through, as the viewer shows them.
  at.setTraverseGhosts(true);
  if (!at.isValid()) return nullptr;
  Render::RenderContext fresh(at, format);
  if (getViewLUTEnabled()) fresh.setViewLUT(getViewLUT());
  if (view_ && view_->stillsInBackground()) {
    view_->requestStill(getNodeID(), NodeView::thumbnailStill, fresh);
    return nullptr;
  }
  still = Render::VidRenderUtils::renderStill(fresh);
  cache.add(fresh, still);
  return still;
}

void FXGraphViewThumbNode::drawThumbnail(const EditGraphIterator& at) {
  Ux::Ptr<UxImage> still = updateCachedStill(at);
  if (!still) {
    // Until the still is made, the picture shown before stands in (scaled
    // to the box when the zoom changed); a plain placeholder only when
    // there has never been one.
    if (shown_)
      renderInto(view_, thumbBox_, shown_);
    else if (view_)
      view_->glob().drawRect(thumbBox_, getMainCol().scaled(0.6));
    return;
  }
  const VideoFormat square =
      DigitalVideoFormats::makeSquarePixelFormat(thumbBox_.width(), thumbBox_.height(), getAspectRatio());
  shown_ = convertVideo(still, square, true, true);
  renderInto(view_, thumbBox_, shown_);
}

bool FXGraphViewThumbNode::thumbnailColour(Colour& out) const { return pictureColourAtMiddle(shown_.get(), out); }

void FXGraphViewThumbNode::takeOverPicture(const FXGraphViewNode& before) {
  if (const auto* thumb = dynamic_cast<const FXGraphViewThumbNode*>(&before); thumb && !shown_) shown_ = thumb->shown_;
}

// -- material nodes ---------------------------------------------------------------

FXGraphViewMatNode::FXGraphViewMatNode(NodeView* view, const EditGraphIterator& at) : FXGraphViewThumbNode(view, at) {
  Ux::Ptr<FXGraphNodeBase> n = at.getNode();
  materialId_ = n ? n->getId() : IdStamp();
  // Sound has no picture to show.
  thumbnail_ = n && n->getTrackType() == TrackType::video;
}

LightweightString<wchar_t> FXGraphViewMatNode::getTitleStr() const {
  const auto* material = dynamic_cast<const MaterialUsageNode*>(node_.get());
  if (!material) return FXGraphViewNode::getTitleStr();
  // The material's own edit names it when it is open; otherwise the name it
  // is used under.
  LightweightString<wchar_t> title = material->getName();
  EditPtr source;
  if (source.i_open(material->getMaterialCookie()) && source) title = source->getName();
  const IdStamp& channel = locator().channel;
  if (channel.valid() && edit_) {
    const LightweightString<wchar_t> name = edit_->getChanDisplayName(channel, 1);
    if (!name.empty()) {
      title += L" : ";
      title += name;
    }
  }
  return title;
}

// -- image nodes ------------------------------------------------------------------

FXGraphViewImageNode::FXGraphViewImageNode(NodeView* view, const EditGraphIterator& at) : FXGraphViewNode(view, at) {}

void FXGraphViewImageNode::drawThumbnail(const EditGraphIterator& at) {
  Ux::Ptr<FXGraphNodeBase> n = at.getNode();
  const auto* image = dynamic_cast<const ImageImportEffect*>(n.get());
  const EditPtr edit = at.getEdit() ? at.getEdit() : edit_;
  if (!image || !edit) return;
  const LightweightString<wchar_t> file = toWide(MaterialManager::findFileForImageClip(*image, *edit));
  // A file read once is kept; only a new file is read again.
  if (file.view() != loadedFile_.view()) {
    loadedFile_ = file;
    createThumbnail({thumbBox_.width(), thumbBox_.height()});
  }
  renderInto(view_, thumbBox_, thumbnail_);
}

void FXGraphViewImageNode::createThumbnail(const XY<int>& size) {
  const VideoFormat format = DigitalVideoFormats::makeSquarePixelFormat(size.x, size.y, getAspectRatio());
  Ux::Ptr<UxImage> picture = ImageCache::loadImage(toUTF8(loadedFile_).str(), &format, size.x, size.y);
  thumbnail_ = ImageConverter::resize(picture, size.x, size.y);
}

bool FXGraphViewImageNode::thumbnailColour(Colour& out) const { return pictureColourAtMiddle(thumbnail_.get(), out); }

// -- colour mattes ----------------------------------------------------------------

FXGraphViewColourMatteNode::FXGraphViewColourMatteNode(NodeView* view, const EditGraphIterator& at)
    : FXGraphViewNode(view, at) {}

void FXGraphViewColourMatteNode::drawThumbnail(const EditGraphIterator& at) {
  Ux::Ptr<FXGraphNodeBase> n = at.getNode();
  const auto* matte = dynamic_cast<const ComplexBackgroundEffect*>(n.get());
  if (!matte || !view_) return;
  const Colour c = matte->getColour(at.getTime(), 0);
  shown_ = Colour(c.r, c.g, c.b);
  drawn_ = true;
  CanvasRenderer renderer = view_->glob().canvas().renderer();
  renderer.renderPrimitive(Glib::RectDescription{thumbBox_, fromColour(shown_)});
  renderer.addModifiedArea(thumbBox_);
}

bool FXGraphViewColourMatteNode::thumbnailColour(Colour& out) const {
  if (drawn_) out = shown_;
  return drawn_;
}

// -- alias nodes ------------------------------------------------------------------

FXGraphViewAliasNode::FXGraphViewAliasNode(NodeView* view, const EditGraphIterator& at) : FXGraphViewNode(view, at) {}

Colour FXGraphViewAliasNode::getMainCol() const {
  // The plain panel colour: an alias reads as a placeholder.
  return Palette(Palette::schemeWindow()).window(0);
}

// -- helpers ----------------------------------------------------------------------

bool isFlatBackgroundColourEffect(Tag<FXGraphNodeBase> tag) {
  if (tag.empty()) return false;
  const auto* background = dynamic_cast<const ComplexBackgroundEffect*>(tag.instance());
  return background && background->isFlat();
}

LightweightString<char> getShotInfo(const Cookie& shot, LightweightString<char> field) {
  const dbrecord* record = EditManager::getProjdb().record(shot);
  return record ? record->get_field(field) : LightweightString<char>();
}
