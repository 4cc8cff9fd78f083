#pragma once

#include <optional>
#include <string>

namespace tavrelin {

/// Sets an environment variable while it lives.
class Environment {
  public:
    Environment(std::string name, const std::string& value);
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    Environment(Environment&&) = delete;
    Environment& operator=(Environment&&) = delete;
    ~Environment();

  private:
    std::string name_;
    std::optional<std::string> before_;
};

/// A folder for one test, which goes with this object.
class TestFolder {
  public:
    TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    TestFolder(TestFolder&&) = delete;
    TestFolder& operator=(TestFolder&&) = delete;
    ~TestFolder();

    [[nodiscard]] std::string Path(const std::string& name) const { return path_ + "/" + name; }
    [[nodiscard]] const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

} // namespace tavrelin
