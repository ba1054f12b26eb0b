#pragma once
#include <map>
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"
#include "host/stream/PStream.h"
#include "host/stream/Streamable.h"

// The file of an edit's bound objects: the bytes "FXOB", a 32-bit format
// number (1), a 32-bit object count, then per object its binding name, its
// short hierarchy name (the key of its registered builder) and its layer chain.
class FXHOST_API ObjectsFile {
public:
  static constexpr uint32_t formatNumber = 1;
  // Two empty strings and a bare compact root header: no object is smaller.
  static constexpr uint64_t minimumObjectBytes = 4 + 4 + 10;

  struct Binding {
    LightweightString<char> name;
    Ux::Ptr<Streamable> object;
  };

  struct Entry {
    LightweightString<char> name;
    LightweightString<char> kind;      // the short hierarchy name read
    Ux::Ptr<Streamable> object;        // null when it could not be built
    int result = 0;                    // the object's read result code; 0 when skipped unread
    uint64_t offset = 0;               // where the entry starts
    LightweightString<char> errorText; // what reading it added to the stream's error text
  };

  struct ReadResult {
    uint32_t declaredCount = 0;
    std::vector<Entry> entries;
    // True when the header and every object read cleanly to the end.
    bool complete = false;
    // Why reading stopped early (empty when it did not).
    LightweightString<char> problem;
    uint64_t stoppedAt = 0;
    std::vector<LightweightString<char>> warnings;
  };

  // Writes the header and every object. False, with the reason, when an
  // object does not pack; what was written is then not to be used.
  static bool write(PStream& s, const std::vector<Binding>& bindings, LightweightString<char>& why);
  // The same into a file, atomically: the old file stays until the new one is whole.
  static bool save(const std::string& path, const std::vector<Binding>& bindings, LightweightString<char>& why);

  // Reads every object it can. An object whose binding name is in `into`
  // is read into that object instead of a new one, and kept whatever the
  // result. Reading stops at the first object that fails (result 6 or 8),
  // since the stream can no longer be trusted after it.
  static ReadResult read(PStream& s, const std::map<LightweightString<char>, Ux::Ptr<Streamable>>* into = nullptr);
  static ReadResult load(const std::string& path,
                         const std::map<LightweightString<char>, Ux::Ptr<Streamable>>* into = nullptr);
};
