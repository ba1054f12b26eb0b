#include "host/edit/EditInfo.h"

#include "host/edit/Edit.h"
#include "host/edit/ProjectDatabase.h"
#include "host/notify/Log.h"

bool EditInfo::hasRecord() const { return cookie_.valid() && EditManager::getProjdb().record(cookie_) != nullptr; }

LightweightString<char> EditInfo::getAttrib(const LightweightString<char>& name) const {
  if (!cookie_.valid()) return LightweightString<char>(std::string());
  if (const dbrecord* record = EditManager::getProjdb().record(cookie_)) return record->get_field(name);
  EditPtr edit;
  if (name == "name" && edit.i_open(cookie_)) return toUTF8(edit->getName());
  return LightweightString<char>(std::string());
}

LightweightString<wchar_t> EditInfo::getAttribW(const LightweightString<char>& name) const {
  return toWide(getAttrib(name));
}

Cookie convertCookie(const Cookie& cookie, int kind, int flags) {
  if (!cookie.valid()) return invalid_cookie;
  const uint16_t suffix = flags >= 0 && flags < keepCookieSuffix ? static_cast<uint16_t>(flags) : cookie.sub();
  auto as = [&](uint16_t k) { return Cookie(cookie.id(), k, suffix); };
  switch (kind) {
  case Cookie::editKind:
  case Cookie::materialKind:
  case Cookie::effectGraphKind:
    return as(static_cast<uint16_t>(kind));
  case recordCookieKind: {
    const ProjectDatabase& db = EditManager::getProjdb();
    if (db.record(cookie)) return as(cookie.kind());
    if (db.record(as(Cookie::materialKind))) return as(Cookie::materialKind);
    return as(Cookie::editKind);
  }
  default:
    debugPrintf("convertCookie: unknown cookie kind %d", kind);
    return invalid_cookie;
  }
}
