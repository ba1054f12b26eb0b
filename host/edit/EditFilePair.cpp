#include "host/edit/EditFilePair.h"

#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "host/edit/EditFile.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

namespace {

// Objects files and edits are at most this large (as their readers take them).
constexpr std::size_t largestFile = std::size_t(256) << 20;

std::optional<std::string> stampOfFile(const std::string& path) {
  std::string bytes, ignored;
  if (!readBoundedFile(path, largestFile, bytes, ignored)) return std::nullopt;
  return EditFile::stampOf(bytes);
}

// Picks the top-level "objects" record out of an edit document as the
// parser goes, and stops there: no tree of the whole edit is built.
class NamedObjectsReader : public nlohmann::json_sax<nlohmann::json> {
public:
  explicit NamedObjectsReader(EditFilePair::Named& out) : out_(out) {}

  bool null() override { return value(); }
  bool boolean(bool) override { return value(); }
  bool number_integer(number_integer_t) override { return value(); }
  bool number_unsigned(number_unsigned_t) override { return value(); }
  bool number_float(number_float_t, const string_t&) override { return value(); }
  bool binary(binary_t&) override { return value(); }
  bool string(string_t& v) override {
    if (inObjects_ && depth_ == 2) {
      if (key_ == "stamp") out_.stamp = v;
      if (key_ == "replaced") out_.replaced = v;
    }
    return value();
  }
  bool start_object(std::size_t) override {
    // Anything but an object at the top is no edit.
    if (depth_ == 0 && sawRoot_) return false;
    sawRoot_ = true;
    if (depth_ == 1 && key_ == "objects") inObjects_ = true;
    ++depth_;
    return true;
  }
  bool start_array(std::size_t) override {
    if (depth_ == 0) return false;
    ++depth_;
    return true;
  }
  bool key(string_t& k) override {
    key_ = k;
    return true;
  }
  bool end_object() override {
    --depth_;
    // The record is read: the rest of the edit is not needed.
    if (inObjects_ && depth_ == 1) return false;
    return true;
  }
  bool end_array() override {
    --depth_;
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
  bool value() { return depth_ > 0; }

  EditFilePair::Named& out_;
  int depth_ = 0;
  bool sawRoot_ = false;
  bool inObjects_ = false;
  std::string key_;
};

} // namespace

EditFilePair::Named EditFilePair::namedBy(const std::string& editPath) {
  Named named;
  std::string text, ignored;
  if (!readBoundedFile(editPath, largestFile, text, ignored)) return named;
  NamedObjectsReader reader(named);
  nlohmann::json::sax_parse(text, &reader);
  // A record that is not whole names nothing.
  if (named.stamp.empty()) named.replaced.clear();
  return named;
}

std::string EditFilePair::objectsPath(const std::string& editPath) { return finalTargetOf(editPath) + ".objects"; }

EditFilePair::EditFilePair(const std::string& editPath)
    : objects_(objectsPath(editPath)), backup_(objects_ + ".prev"), named_(namedBy(editPath)) {
  objectsStamp_ = stampOfFile(objects_);
  backupStamp_ = stampOfFile(backup_);
  struct stat st;
  backupThere_ = ::lstat(backup_.c_str(), &st) == 0;
}

EditFilePair::SavePlan EditFilePair::planSave() {
  SavePlan plan;
  const bool backupIsNamed = backupStamp_ && !named_.stamp.empty() && *backupStamp_ == named_.stamp;
  if (backupIsNamed && objectsStamp_ != backupStamp_) {
    // A save that could not finish left objects in place that nothing
    // names; the ones the edit on disk names are the backup, which stays
    // until the new edit names others.
    plan.replaced = named_.stamp;
    plan.dropBackupAfter = true;
    return plan;
  }
  if (!objectsStamp_) return plan;
  plan.replaced = *objectsStamp_;
  bool nameFree = !backupThere_;
  // A backup of ours: a copy of the objects in place, or the objects that
  // the last save replaced and could not remove.
  const bool backupIsOurs = backupStamp_ && (*backupStamp_ == *objectsStamp_ ||
                                             (!named_.replaced.empty() && *backupStamp_ == named_.replaced));
  if (backupThere_ && backupIsOurs) backupThere_ = !(nameFree = ::unlink(backup_.c_str()) == 0);
  // Somebody else's file at the backup's name stays: this save keeps no
  // backup rather than remove it.
  plan.keepObjects = nameFree;
  return plan;
}

void EditFilePair::finishSave(const SavePlan& plan) const {
  if (!plan.dropBackupAfter) return;
  // Still the file it was, unless somebody put another there meanwhile.
  if (stampOfFile(backup_) == backupStamp_) ::unlink(backup_.c_str());
}
