#include "host/ui/EditViewer.h"

#include <cstdio>

#include "host/config/Resources.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/ProjectDatabase.h"
#include "host/notify/Log.h"
#include "host/render/StillsCache.h"
#include "host/render/VidRenderUtils.h"
#include "host/ui/TextRowsPanel.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int pictureWidth = 256;
constexpr int pictureHeight = 144; // 16:9
// Stills and test cards have no end of their own: a shot's edit runs a day.
constexpr double shotLength = 86400;

// The material with that cookie in an edit that some vob shows, and that edit.
Ux::Ptr<MaterialUsageNode> findShownMaterial(const Cookie& shot, EditPtr& holder) {
  for (Vob* vob : VobManager::all()) {
    const EditPtr& edit = vob->getEdit();
    if (!edit) continue;
    for (const auto& node : edit->allNodes())
      if (auto material = Ux::dynamicCast<MaterialUsageNode>(node))
        if (material->getMaterialCookie().stripped() == shot.stripped()) {
          holder = edit;
          return material;
        }
  }
  return nullptr;
}

// The material a shot's project-database record describes, or null.
Ux::Ptr<MaterialUsageNode> materialFromRecord(const Cookie& shot, const IdStamp& id, std::string& folder) {
  const dbrecord* record = EditManager::getProjdb().record(shot);
  if (!record) return nullptr;
  const LightweightString<char> media = record->get_field("media");
  MaterialUsageNode::Media kind;
  if (media == "testcard")
    kind = MaterialUsageNode::Media::testCard;
  else if (media == "file")
    kind = MaterialUsageNode::Media::file;
  else if (media == "tone")
    kind = MaterialUsageNode::Media::tone;
  else
    return nullptr;
  folder = record->get_field("folder").str();
  return new MaterialUsageNode(id, toWide(record->get_field("name")), kind, record->get_field("source"),
                               kind == MaterialUsageNode::Media::tone ? TrackType::audio : TrackType::video);
}

// The picture, the time under it and the header (a row high), in the border.
XY<int> viewerSize() {
  const int frame = 2 * StandardPanel::getDefaultBorder().width;
  const int gap = UifStd::getWidgetGap();
  return {pictureWidth + frame + 2 * gap, pictureHeight + 2 * UifStd::getRowHeight() + frame + 3 * gap};
}

// An edit that shows one shot from its start, identified by the shot's cookie.
EditPtr makeShotEdit(const Cookie& shot) {
  const IdStamp nodeId(1, 0, 2);
  std::string folder;
  EditPtr holder;
  Ux::Ptr<MaterialUsageNode> material;
  if (auto shown = findShownMaterial(shot, holder)) {
    folder = holder->getFolder();
    // The copy takes the id this edit gives it.
    material =
        new MaterialUsageNode(nodeId, shown->getName(), shown->getMedia(), shown->getSource(), shown->getTrackType());
  } else {
    material = materialFromRecord(shot, nodeId, folder);
  }
  if (!material) return nullptr;
  material->setMaterialCookie(shot);
  EditPtr edit(new Edit(shot, material->getName()));
  edit->setFolder(folder);
  edit->addNode(material);
  EditChannel channel;
  channel.id = IdStamp(1, 0, 1);
  channel.type = material->getTrackType();
  channel.name = channel.group = channel.type == TrackType::audio ? L"A1" : L"V1";
  channel.cels = {{0, shotLength, Cel::Kind::material, nodeId}};
  edit->addChannel(std::move(channel));
  return edit;
}
} // namespace

EditViewer::EditViewer(const EditPtr& edit, LightweightString<char> kind, double time,
                       const LightweightString<wchar_t>& name)
    : StandardPanel(viewerSize()), kind_(std::move(kind)), vob_(std::make_unique<Vob>(edit)) {
  setBorder(getDefaultBorder());
  setMovable(true);
  setTitle(resourceStrW(13028) + L" : " + (name.empty() ? edit->getName() : name), UifStd::getTitleFont());
  addStandardWidgets(titleWidget | closeWidget);
  vob_->storeCurrentTime(time);
  attachTo(vob_.get());
}

EditViewer::~EditViewer() {
  // The vob tells its clients that it closes; this one is going already.
  attachTo(nullptr);
  vob_.reset();
}

Glob::PixelBox EditViewer::pictureBox() const {
  const PixelBox user = getUserArea();
  const int x0 = user.x0 + UifStd::getWidgetGap();
  const int y1 = user.y1 - UifStd::getWidgetGap();
  return {x0, y1 - pictureHeight, x0 + pictureWidth, y1};
}

void EditViewer::draw() {
  StandardPanel::draw();
  const PixelBox box = pictureBox();
  drawRect(box, Colour(0, 0, 0));
  const EditPtr& edit = vob_->getEdit();
  const double t = vob_->getCurrentTime();
  char text[48];
  std::snprintf(text, sizeof text, "%.2f s", t);
  drawText({box.x0, box.y0 - UifStd::getRowHeight(), box.x1, box.y0}, toWide(text), getPalette().text(), {}, 0);
  if (!edit) return;
  EditGraphIterator at;
  for (int i = 0; i < edit->getNumChans() && !at.isValid(); ++i)
    if (edit->getChan(i).type == TrackType::video) at = EditGraphIterator::atChannel(edit, t, edit->getChanId(i));
  if (!at.isValid()) return;
  const Render::RenderContext context(at, VideoFormat{"viewer", pictureWidth, pictureHeight, 16.0 / 9.0});
  Ux::Ptr<UxImage> still = Render::VidRenderUtils::cachedStill(context);
  CanvasRenderer r = canvas().renderer();
  r.renderPrimitive(Glib::ImageDescription{box, still});
  r.addModifiedArea(box);
}

void EditViewer::handleModifications(const EditModifications&, const VobModification& vobMod) {
  if (!(vobMod.flags & VobModification::closing) && GlobManager::initialised()) redraw();
}

EditViewer* makeEditViewer(LightweightString<char> kind, Cookie cookie, XY<int> position, double time,
                           LightweightString<wchar_t> name) {
  if (kind != "tilev") {
    Log::printf("No viewer: the kind \"%s\" is not known (\"tilev\" is)", kind.c_str());
    return nullptr;
  }
  EditPtr edit;
  if (!edit.i_open(cookie) && !(edit = makeShotEdit(cookie))) {
    Log::printf("No viewer: %s names no open edit and no shot", cookie.asString().c_str());
    return nullptr;
  }
  if (!GlobManager::initialised()) {
    Log::printf("No viewer: there is no screen");
    return nullptr;
  }
  auto* viewer = new EditViewer(edit, std::move(kind), time, name);
  return TextRowsPanel::showOnScreen(viewer, position) ? viewer : nullptr;
}

bool set_it(EditViewer* viewer) {
  if (!viewer) return false;
  Vob::setPlayMachine(viewer->getVob());
  viewer->popToTop(true);
  return true;
}
