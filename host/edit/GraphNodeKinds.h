#pragma once
#include "host/FxHostApi.h"
#include "host/core/Colour.h"
#include "host/core/Cookie.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/MediaPlacement.h"

// A source material used in the edit: a generated test card or tone, or a
// picture file. Materials are edits of their own in a real editor; here one
// carries its name, a cookie and what it shows.
class FXHOST_API MaterialUsageNode : public FXGraphNodeBase {
public:
  enum class Media { testCard, file, tone };
  // The host's material kind pair; (1, 647) marks a material that the
  // local-tree layout leaves out when it sits on a channel of subtype 4.
  struct Kind {
    int first = 0;
    int second = 0;
  };

  MaterialUsageNode(const IdStamp& id, LightweightString<wchar_t> name, Media media, LightweightString<char> source,
                    TrackType type = TrackType::video);
  ~MaterialUsageNode() override;

  Media getMedia() const noexcept { return media_; }
  // The test card's pattern ("bars", "grid", "ramp", "solid:r,g,b"), the
  // file's path as written in the edit, or the tone's frequency.
  const LightweightString<char>& getSource() const noexcept { return source_; }
  const Cookie& getMaterialCookie() const noexcept { return cookie_; }
  void setMaterialCookie(const Cookie& c) {
    cookie_ = c;
    countChange();
  }
  Kind getMaterialKind() const noexcept { return kind_; }
  void setMaterialKind(Kind k) {
    kind_ = k;
    countChange();
  }
  // Where a file's media lies in the edit (file materials only).
  const MediaPlacement& placement() const noexcept { return placement_; }
  void setPlacement(const MediaPlacement& p) {
    placement_ = p;
    countChange();
  }
  // Whether it is a plain source (not a nested edit): every material here is.
  bool isPlainMaterial() const noexcept { return true; }

  Ux::Ptr<FXGraphNodeBase> cloneNode() const override;

private:
  MaterialUsageNode(const MaterialUsageNode&) = default;
  Media media_;
  LightweightString<char> source_;
  Cookie cookie_;
  Kind kind_;
  MediaPlacement placement_;
};

// An imported still image: an effect without inputs that shows a picture file.
class FXHOST_API ImageImportEffect : public EffectInstance_opu4h5a4j {
public:
  ImageImportEffect(const IdStamp& id, LightweightString<wchar_t> name, LightweightString<char> file);
  ~ImageImportEffect() override;
  // The file as written in the edit (relative to the edit file's folder).
  const LightweightString<char>& getFile() const noexcept { return file_; }
  void setFile(const LightweightString<char>& f) {
    file_ = f;
    countChange();
  }
  Ux::Ptr<FXGraphNodeBase> cloneNode() const override;

private:
  ImageImportEffect(const ImageImportEffect&) = default;
  LightweightString<char> file_;
};

// An aliased input: a stand-in that shows what its one input shows. The view
// does not let the user rewire its input.
class FXHOST_API AliasedInputEffect : public EffectInstance_opu4h5a4j {
public:
  AliasedInputEffect(const IdStamp& id, LightweightString<wchar_t> name);
  ~AliasedInputEffect() override;
  Ux::Ptr<FXGraphNodeBase> cloneNode() const override;

private:
  AliasedInputEffect(const AliasedInputEffect&) = default;
};

// A background matte: one flat colour, or a gradient between two colours.
class FXHOST_API ComplexBackgroundEffect : public EffectInstance_opu4h5a4j {
public:
  static constexpr const char* flatTag = "PixShader:Mattes:flatcol.fx";
  static constexpr const char* gradientTag = "PixShader:Mattes:gradients.fx";
  enum class Mode { flat, gradient };

  ComplexBackgroundEffect(const IdStamp& id, LightweightString<wchar_t> name, Mode mode, Colour first,
                          Colour second = Colour());
  ~ComplexBackgroundEffect() override;

  Mode getMode() const noexcept { return mode_; }
  bool isFlat() const noexcept { return mode_ == Mode::flat; }
  // The colour at a time (the mattes here do not change over time). A flat
  // matte has one colour; a gradient runs from the first (bottom) to the
  // second (top).
  Colour getColour(double time, int index = 0) const;
  void setColour(int index, const Colour& c);
  Ux::Ptr<FXGraphNodeBase> cloneNode() const override;

private:
  ComplexBackgroundEffect(const ComplexBackgroundEffect&) = default;
  Mode mode_;
  Colour colours_[2];
};

// Which of the kinds above a graph node is, decided in one place for all
// that show, colour or describe nodes. A background matte, an image and an
// alias are effects too; each is told as its own kind first.
enum class GraphNodeKind { none, material, image, alias, background, effect };
FXHOST_API GraphNodeKind nodeKindOf(const FXGraphNodeBase* node) noexcept;
