#pragma once

#include <map>
#include <optional>
#include <string>

namespace tavrelin {

/// Sets an environment variable while it lives.
class Environment {
  public:
    Environment(std::string name, const std::string& value);
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment();

  private:
    std::string name_;
    std::optional<std::string> before_;
};

/// A folder for one test, which goes with this object and all that lies in it.
class TestFolder {
  public:
    TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder();

    [[nodiscard]] std::string Path(const std::string& name) const { return path_ + "/" + name; }
    [[nodiscard]] const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

/// A folder of tools that are found before the machine's own while it lives.
class TestTools : public TestFolder {
  public:
    TestTools();

    /// A shell script under the tool's name.
    void Install(const std::string& tool, const std::string& script) const;

  private:
    Environment path_;
};

/// The bytes of a file; empty when it cannot be read.
std::string TextOf(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

/// The files in a folder by their names; none when it is not there.
std::map<std::string, std::string> FilesIn(const std::string& folder);

} // namespace tavrelin
