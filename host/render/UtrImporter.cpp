#include "host/render/UtrImporter.h"

#include <cctype>
#include <filesystem>
#include <limits>

#include "host/config/Resources.h"
#include "host/edit/ProjectDatabase.h"
#include "host/edit/TransitStatus.h"
#include "host/edit/Vob.h"
#include "host/notify/Diagnostics.h"
#include "host/notify/Log.h"
#include "host/render/VidRenderUtils.h"

namespace {

Ux::Ptr<MaterialUsageNode> refuse(const std::string& why, const Palette& palette) {
  Log::printf("Import render: %s", why.c_str());
  Diagnostics::tellUser(resourceStrW(13045) + toWide(why), palette);
  return nullptr;
}

// A file name made of the node's name, safe on any file system.
std::string fileStem(const LightweightString<wchar_t>& name) {
  const std::string utf8 = toUTF8(name).str();
  std::string stem;
  for (char c : utf8) stem += std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' ? c : '_';
  return (stem.empty() ? std::string("effect") : stem) + "-render";
}

// "<stem>.png", else "<stem>-2.png", "<stem>-3.png", ...: the first name not taken.
std::string freshFileName(const std::string& folder, const std::string& stem) {
  for (int n = 1;; ++n) {
    const std::string name = n == 1 ? stem + ".png" : stem + "-" + std::to_string(n) + ".png";
    std::error_code ec;
    if (!std::filesystem::exists(std::filesystem::path(folder) / name, ec) && !ec) return name;
  }
}

// The id after the highest that the edit uses for a node or a channel.
IdStamp freshId(const Edit& edit) {
  IdStamp top(1, 0, 0);
  for (const auto& node : edit.allNodes()) top = std::max(top, node->getId());
  for (int i = 0; i < edit.getNumChans(); ++i) top = std::max(top, edit.getChanId(i));
  if (top.third() == std::numeric_limits<uint32_t>::max()) return IdStamp(top.first() + 1, 0, 1);
  return IdStamp(top.first(), top.second(), top.third() + 1);
}

} // namespace

Ux::Ptr<MaterialUsageNode> UtrImporter::createImporter(Vob* vob, EditGraphIterator& at, const Palette& palette) {
  if (!at.isValid()) return refuse("the graph position is not valid", palette);
  const EditPtr edit = at.getCurrentPosEdit();
  if (vob && vob->getEdit() != edit) vob = nullptr;
  if (vob && vob->isReadOnly()) return refuse(resourceStr(13029).str(), palette);
  const std::string folder = edit->getFolder();
  if (folder.empty()) return refuse("the edit has no folder to put the picture in (save the edit first)", palette);

  const VideoMetadata& video = edit->getVideoMetadata();
  const Render::RenderContext context(at, VideoFormat{"import", video.width, video.height, video.aspectRatio()});
  const Ux::Ptr<UxImage> picture = Render::VidRenderUtils::renderStill(context);
  if (!picture) return refuse("the picture could not be rendered at the edit's picture size", palette);

  const Ux::Ptr<FXGraphNodeBase> source = at.getNode();
  const std::string file = freshFileName(folder, fileStem(source->getName()));
  const std::string path = (std::filesystem::path(folder) / file).string();
  if (!picture->savePNG(path)) return refuse("cannot write " + path, palette);

  Ux::Ptr<MaterialUsageNode> material(
      new MaterialUsageNode(freshId(*edit), source->getName() + L" (render)", MaterialUsageNode::Media::file, file));
  material->setMaterialCookie(Cookie::generate(Cookie::materialKind));
  dbrecord& shot = EditManager::getProjdb().recordFor(material->getMaterialCookie());
  shot.set_field("name", toUTF8(material->getName()).str());
  shot.set_field("media", "file");
  shot.set_field("source", file);
  shot.set_field("folder", folder);
  {
    EasyBackup undoStep(edit);
    edit->addNode(material);
    edit->setDirty(true);
  }
  if (vob && vob->getStateFlag()) TransitStatus::manager().notifyChange(vob);
  edit->addModification({EditModification(EditModification::structure, material->getId())}, true);
  return material;
}
