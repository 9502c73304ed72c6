// The pictures of a run, in order, with the timeline lines around each:
// written as index.html beside them.
#pragma once

#include <string>
#include <vector>

namespace kv::sim::render {

class Album {
 public:
  explicit Album(std::string directory) : directory_(std::move(directory)) {}

  const std::string& directory() const { return directory_; }

  // A line of the timeline, as the run prints it.
  void addLine(std::string line) { lines_.push_back(std::move(line)); }

  // The file name for a picture of `scenarioFile` at `line` named `name`:
  // "core_face-12-scanning.png" (only letters, digits, '.', '-', '_').
  static std::string fileName(const std::string& scenarioFile, int line, const std::string& name);

  // A picture written now (a file in the directory), after the lines so far.
  void addPicture(std::string title, std::string file);

  // Writes index.html: each picture beside the timeline lines that led to
  // it (since the one before, the last `kBefore` at most) and the first
  // `kAfter` that followed. False with *error when it cannot.
  bool writeIndex(std::string* error) const;

  size_t pictureCount() const { return pictures_.size(); }

  static constexpr size_t kBefore = 30, kAfter = 6;

 private:
  struct Picture {
    std::string title, file;
    size_t position;  // lines before it
  };
  std::string directory_;
  std::vector<std::string> lines_;
  std::vector<Picture> pictures_;
};

}  // namespace kv::sim::render
