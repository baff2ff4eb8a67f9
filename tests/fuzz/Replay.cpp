// Gives inputs to a fuzz target, without any fuzzer:
//
//   fuzz_replay TARGET FILE|FOLDER...
//
// Ends with the first that shows a defect, whose name is then the last line printed.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/Targets.h"

namespace
{

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& place)
{
    if (!fs::is_directory(place)) {
        return {place};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> ContentOf(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error(file.string() + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int Run(const std::vector<std::string>& arguments)
{
    if (arguments.size() < 2) {
        throw std::invalid_argument("give TARGET and FILE or FOLDER");
    }
    const test::FuzzTarget target = test::FuzzTargetNamed(arguments[0]);
    test::AbortOnFailedCheck();
    std::size_t count = 0;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        for (const fs::path& file : FilesOf(arguments[i])) {
            std::cout << file.string() << std::endl;
            const std::vector<std::uint8_t> content = ContentOf(file);
            target(content.data(), content.size());
            ++count;
        }
    }
    std::cout << arguments[0] << ": " << count << " inputs\n";
    return count == 0 ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "fuzz_replay: " << error.what() << "\n";
        return 2;
    }
}
