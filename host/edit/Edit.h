#pragma once
// An edit and the counted reference to it.
//
// Map
//   Edit ........ name, cookie, frame rate, channels and cels, graph nodes in
//                 the tag bag, bound objects, modifications, undo history
//   EditPtr ..... counted reference; finds a live edit by cookie
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"
#include "host/core/UndoExtra.h"
#include "host/core/iObject.h"
#include "host/edit/Channel.h"
#include "host/edit/EditModification.h"
#include "host/edit/FXGraphNodeBase.h"
#include "host/notify/Notifier.h"
#include "host/stream/TagBag.h"
#include "host/stream/Taggable.h"

// The picture format of an edit's video.
struct VideoMetadata {
  int aspectCode = 2; // 2: 16/9
  int width = 1920;
  int height = 1080;
  double frameRate = 25;
  double aspectRatio() const { return aspectCode == 2 ? 16.0 / 9.0 : double(width) / double(height); }
};

// An edit: named, identified by a cookie, with a frame rate and channels of
// cels over time; its graph nodes live in its tag bag and other persistent
// objects are bound to it by name (saved with the edit, outside its undo
// history). Modifications reach everyone showing the edit through its
// modification notifier. A live edit can be found by its cookie.
//
// Edits are made with new and held by EditPtr; an edit is closed before it
// is dropped, which lets its bound objects let go of it.
class FXHOST_API Edit : public iObject {
public:
  explicit Edit(const Cookie& cookie, LightweightString<wchar_t> name = {});
  ~Edit() override;
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;

  const Cookie& getCookie() const noexcept { return cookie_; }
  const LightweightString<wchar_t>& getName() const noexcept { return name_; }
  // Renaming tells everyone showing the edit (modification kind 3).
  void setName(const LightweightString<wchar_t>& name);
  double getFrameRate() const noexcept { return video_.frameRate; }
  void setFrameRate(double fps) { video_.frameRate = fps > 0 ? fps : 25; }
  const VideoMetadata& getVideoMetadata() const noexcept { return video_; }
  // The picture format; a size below 1 pixel either way becomes 1.
  void setVideoMetadata(const VideoMetadata& video) {
    video_ = video;
    video_.width = std::max(video_.width, 1);
    video_.height = std::max(video_.height, 1);
    setFrameRate(video.frameRate);
  }
  // The time rounded to the nearest whole frame.
  double wholeFrame(double t) const;
  // The folder that relative file names in the edit are resolved against.
  const std::string& getFolder() const noexcept { return folder_; }
  void setFolder(const std::string& folder) { folder_ = folder; }
  // Fields of the edit's file that this version does not know (a later
  // version's), as JSON text, kept so that saving the edit loses none.
  const std::string& getFileExtras() const noexcept { return fileExtras_; }
  void setFileExtras(std::string json) { fileExtras_ = std::move(json); }

  // Channels, in display order.
  int getNumChans() const noexcept { return static_cast<int>(channels_.size()); }
  const EditChannel& getChan(int index) const { return channels_.at(static_cast<std::size_t>(index)); }
  EditChannel& getChan(int index) { return channels_.at(static_cast<std::size_t>(index)); }
  // The index of the channel with that id, or -1.
  int findChan(const IdStamp& id) const;
  IdStamp getChanId(int index) const;
  // 1 video, 2 audio, 0 for no such channel.
  int getChanType(const IdStamp& id) const;
  // Channels are added whole; a channel's id is not changed in place.
  void addChannel(EditChannel channel);
  // A channel's name for display. Style 1 is the short name ("V1"); style 3
  // adds the kind ("V1 (video)").
  LightweightString<wchar_t> getChanDisplayName(const IdStamp& id, int style) const;
  // The channels shown as one with it (itself included), in order.
  std::vector<IdStamp> getGroupContainingChan(const IdStamp& id) const;
  LightweightString<wchar_t> getGroupDisplayName(const IdStamp& id, bool full) const;

  // The span of the edit's cels.
  double getStartTime() const;
  double getEndTime() const;

  // Graph nodes.
  TagBag& getTagBag() noexcept { return tags_; }
  const TagBag& getTagBag() const noexcept { return tags_; }
  template <class T>
  Ux::Ptr<T> openObject(const IdStamp& id) const {
    return Ux::Ptr<T>(dynamic_cast<T*>(tags_.find(id)));
  }
  Ux::Ptr<FXGraphNodeBase> openNode(const IdStamp& id) const { return openObject<FXGraphNodeBase>(id); }
  void addNode(const Ux::Ptr<FXGraphNodeBase>& node) { tags_.addObject(node->getId(), node); }
  std::vector<Ux::Ptr<FXGraphNodeBase>> allNodes() const;

  // Objects bound to the edit by name; saving the edit saves them.
  void bindObjectToEdit(const LightweightString<char>& name, Ux::Ptr<Taggable> object);
  Ux::Ptr<Taggable> openObjectInternal(const LightweightString<char>& name) const;
  bool unbindObject(const LightweightString<char>& name);
  std::vector<std::pair<LightweightString<char>, Ux::Ptr<Taggable>>> boundObjects() const;

  bool isDirty() const noexcept { return dirty_; }
  void setDirty(bool dirty) noexcept { dirty_ = dirty; }
  // Counts the modifications told so far: anything computed from the edit
  // (a rendered still) is current while the revision is unchanged.
  uint64_t revision() const noexcept { return revision_; }

  // Tells everyone showing the edit. `now` false keeps them until the next
  // flushModifications (a batch of changes told once).
  void addModification(const EditModifications& mods, bool now);
  void flushModifications();
  NotifierEx<EditModifications>& modificationNotifier() noexcept { return modifications_; }

  // Undo history: whole-edit snapshots of channels and nodes, each with
  // the undo state of the bound objects that keep one (Taggable::undoState).
  void makeBackup();
  // A backup that also brings back the extra state when undone.
  void makeBackup(std::shared_ptr<const UndoExtra> extra);
  bool canUndo() const noexcept { return !undo_.empty(); }
  bool canRedo() const noexcept { return !redo_.empty(); }
  // Restores the state before the last backup; tells everyone (kind 5).
  bool undo();
  bool redo();
  // Undoes the last step and forgets it (no redo): a gesture that was let
  // go, as if it had not begun.
  bool withdrawLastStep();
  std::size_t undoDepth() const noexcept { return undo_.size(); }

  // Lets go of every held object; bound objects that refer back to the edit
  // then release it.
  void close();
  bool isClosed() const noexcept { return closed_; }

private:
  struct Snapshot {
    std::vector<EditChannel> channels;
    std::vector<Ux::Ptr<FXGraphNodeBase>> nodes;
    std::shared_ptr<const UndoExtra> extra;
    bool dirty = false; // whether the edit had unsaved changes when the step began
  };
  Snapshot takeSnapshot() const;
  void restore(const Snapshot& s);

  Cookie cookie_;
  LightweightString<wchar_t> name_;
  VideoMetadata video_;
  std::string folder_;
  std::string fileExtras_;
  std::vector<EditChannel> channels_;
  // Channel ids to their index, so that walks find channels in constant time.
  std::unordered_map<IdStamp, int> chanIndex_;
  TagBag tags_;
  std::map<LightweightString<char>, Ux::Ptr<Taggable>> bound_;
  NotifierEx<EditModifications> modifications_;
  EditModifications pending_;
  std::vector<Snapshot> undo_;
  std::vector<Snapshot> redo_;
  bool dirty_ = false;
  bool closed_ = false;
  uint64_t revision_ = 0;
};

// A counted reference to an edit.
class FXHOST_API EditPtr {
public:
  EditPtr() = default;
  EditPtr(std::nullptr_t) {}
  EditPtr(Ux::Ptr<Edit> edit) : edit_(std::move(edit)) {}
  EditPtr(Edit* edit) : edit_(edit) {}

  // Refers to the live, open edit with that cookie; null when there is none.
  // Returns whether an edit was found. `behaviour` 0 is the default: open
  // only what is already loaded.
  bool i_open(const Cookie& cookie, int behaviour = 0);

  Edit* get() const noexcept { return edit_.get(); }
  Edit* operator->() const noexcept { return edit_.get(); }
  Edit& operator*() const noexcept { return *edit_; }
  explicit operator bool() const noexcept { return static_cast<bool>(edit_); }
  const Ux::Ptr<Edit>& ptr() const noexcept { return edit_; }
  friend bool operator==(const EditPtr& a, const EditPtr& b) noexcept { return a.edit_ == b.edit_; }
  void reset() { edit_.reset(); }

private:
  Ux::Ptr<Edit> edit_;
};
