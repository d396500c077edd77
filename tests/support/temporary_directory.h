#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

// A temporary directory that is deleted with the object.
class TemporaryDirectory {
public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "ulo-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("mkdtemp failed");
    path_ = name;
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
  std::filesystem::path path_;
};

// A temporary directory that is the data directory during the object's lifetime.
class DataDirectory : public TemporaryDirectory {
public:
  DataDirectory() { setenv("ULO_DATA_DIR", path().c_str(), 1); }
  ~DataDirectory() { unsetenv("ULO_DATA_DIR"); }
};
