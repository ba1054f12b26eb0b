#pragma once
#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/LightweightString.h"

// What the project knows of an edit or a shot, by cookie: the fields of its
// project-database record, read when asked (so it follows later changes).
class FXHOST_API EditInfo {
public:
  explicit EditInfo(const Cookie& cookie) : cookie_(cookie) {}

  const Cookie& cookie() const noexcept { return cookie_; }
  // Whether the project database has a record for the cookie.
  bool hasRecord() const;
  // A field of the record ("name", "media", "source", ...); empty when there
  // is no such field. Without a record, "name" reads the name of the live
  // edit with that cookie, so that edits, which have no records here, still
  // have their names.
  LightweightString<char> getAttrib(const LightweightString<char>& name) const;
  LightweightString<wchar_t> getAttribW(const LightweightString<char>& name) const;

private:
  Cookie cookie_;
};

// Cookie kinds that convertCookie understands beside the host's own (1 edit,
// 2 material, 3 effect graph): 'E' (69), the cookie under which the project
// database keeps the record of the thing the cookie identifies.
inline constexpr int recordCookieKind = 'E';
// The `flags` of convertCookie that keep the cookie's suffix.
inline constexpr int keepCookieSuffix = 255;

// A cookie of another kind for the same identifier. `kind` is 1, 2 or 3 (the
// result has that kind), or recordCookieKind: the record's cookie, that is the
// cookie itself when the database has a record under it, else the material
// kind's when it has one there, else the edit kind's (the audio routing table
// asks convertCookie(cell's strip cookie, 69, 255) to find a shot's record).
// `flags` 255 keeps the suffix (the cookie's second value); 0 to 254 put that
// value in its place. An invalid cookie or an unknown kind gives
// invalid_cookie.
FXHOST_API Cookie convertCookie(const Cookie& cookie, int kind, int flags);
