#ifndef TRUNNION_TESTS_HOST_TEMP_FOLDER_H
#define TRUNNION_TESTS_HOST_TEMP_FOLDER_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <stdlib.h>

namespace test
{

/// A folder of its own for one test, gone afterwards.
class TempFolder
{
  public:
    TempFolder()
    {
        std::string name =
            (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "trunnion-XXXXXX")
                .string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path = name;
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path; }

    std::filesystem::path Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path / name, std::ios::binary) << text;
        return path / name;
    }

    /// What is in it, in order.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::filesystem::path path;
};

inline std::string ContentOf(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace test

#endif
