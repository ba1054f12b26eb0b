#pragma once
#include <string>
#include <utility>
#include <vector>

namespace fxgraph {

// Whether two paths name the same file, through symbolic links, whether or
// not it is there yet.
bool sameFile(const std::string& a, const std::string& b);

// Moves a file out of the way under a name of its own beside it (PATH.bad,
// else PATH.bad.2, ...), never over another file. True with the new name;
// false, with the system's reason, when it cannot be moved.
bool keepAside(const std::string& path, std::string& asideAs, std::string& why);

// The files of the user's that a run reads and keeps (the edit, its
// objects, the script, the preferences, the screen layout): a picture or a
// dump named by mistake must never replace one of them.
class UserFiles {
public:
  void add(const std::string& path, std::string what);
  // What `output` would replace ("the edit"), or empty when nothing.
  std::string clash(const std::string& output) const;

private:
  std::vector<std::pair<std::string, std::string>> files_; // path, what it is
};

} // namespace fxgraph
