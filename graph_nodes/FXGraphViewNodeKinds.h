#pragma once
// The kinds of on-screen node: they change only the thumbnail, the title,
// the node identity or the main colour.
#include <string>

#include "graph_nodes/FXGraphViewNode.h"
#include "host/core/Cookie.h"
#include "host/draw/UxImage.h"
#include "host/stream/TagBase.h"

// An effect whose output is shown as a rendered still.
class GRPHTOOL_API FXGraphViewThumbNode : public FXGraphViewNode {
public:
  FXGraphViewThumbNode(NodeView* view, const EditGraphIterator& at);
  bool hasThumbnail() const override { return true; }
  using FXGraphViewNode::drawThumbnail;
  void drawThumbnail(const EditGraphIterator& at) override;
  // The still for the position: from the host's stills cache, or rendered
  // and added to it.
  Ux::Ptr<UxImage> updateCachedStill(EditGraphIterator at);
  bool thumbnailColour(Colour& out) const override;
  void takeOverPicture(const FXGraphViewNode& before) override;

private:
  Ux::Ptr<UxImage> shown_; // the picture last drawn
};

// A source material used in the edit.
class GRPHTOOL_API FXGraphViewMatNode : public FXGraphViewThumbNode {
public:
  FXGraphViewMatNode(NodeView* view, const EditGraphIterator& at);
  IdStamp getNodeID() const override { return materialId_; }
  LightweightString<wchar_t> getTitleStr() const override;
  bool hasThumbnail() const override { return thumbnail_; }

private:
  IdStamp materialId_;
  bool thumbnail_;
};

// An imported still image.
class GRPHTOOL_API FXGraphViewImageNode : public FXGraphViewNode {
public:
  FXGraphViewImageNode(NodeView* view, const EditGraphIterator& at);
  bool hasThumbnail() const override { return true; }
  using FXGraphViewNode::drawThumbnail;
  void drawThumbnail(const EditGraphIterator& at) override;
  void createThumbnail(const XY<int>& size);
  bool thumbnailColour(Colour& out) const override;

private:
  LightweightString<wchar_t> loadedFile_;
  Ux::Ptr<UxImage> thumbnail_;
};

// A flat background colour.
class GRPHTOOL_API FXGraphViewColourMatteNode : public FXGraphViewNode {
public:
  FXGraphViewColourMatteNode(NodeView* view, const EditGraphIterator& at);
  bool hasThumbnail() const override { return true; }
  using FXGraphViewNode::drawThumbnail;
  void drawThumbnail(const EditGraphIterator& at) override;
  bool thumbnailColour(Colour& out) const override;

private:
  bool drawn_ = false;
  Colour shown_; // the colour last drawn
};

// An aliased input: reads as a placeholder.
class GRPHTOOL_API FXGraphViewAliasNode : public FXGraphViewNode {
public:
  FXGraphViewAliasNode(NodeView* view, const EditGraphIterator& at);
  Colour getMainCol() const override;
};

// Whether the tagged object is a background effect in its flat, one-colour mode.
GRPHTOOL_API bool isFlatBackgroundColourEffect(Tag<FXGraphNodeBase> tag);
// One field of a shot's record in the project database.
GRPHTOOL_API LightweightString<char> getShotInfo(const Cookie& shot, LightweightString<char> field);
