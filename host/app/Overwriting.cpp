#include "app/Overwriting.h"

#include <algorithm>
#include <system_error>

#include <sys/stat.h>

#include "text/InputError.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

/// Also of a file that is not there yet.
fs::path RealPath(const fs::path& path)
{
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    const fs::path real = error ? path : fs::weakly_canonical(whole, error);
    return error ? path.lexically_normal() : real;
}

bool AreSame(const fs::path& a, const fs::path& b)
{
    std::error_code notThere;
    return fs::equivalent(a, b, notThere) || RealPath(a) == RealPath(b);
}

} // namespace

void RefuseOverwriting(const std::vector<fs::path>& written, const std::vector<fs::path>& read)
{
    std::vector<fs::path> taken = read;
    for (const fs::path& output : written) {
        if (std::any_of(taken.begin(), taken.end(),
                        [&](const fs::path& other) { return AreSame(output, other); })) {
            throw InputError(output.string(), "the run would write over a file that it reads or "
                                              "writes; choose another name");
        }
        taken.push_back(output);
    }
}

std::vector<std::string> FileKeys(const fs::path& path)
{
    std::vector<std::string> keys{RealPath(path).string()};
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0) { // there may be links that are not symbolic
        keys.push_back("inode " + std::to_string(status.st_dev) + ":" +
                       std::to_string(status.st_ino));
    }
    return keys;
}

} // namespace host
