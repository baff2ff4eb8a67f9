#include "app/ViewCommand.h"

#include "app/FileDigest.h"
#include "app/Overwriting.h"
#include "machine/LoadedMachine.h"
#include "report/Page.h"
#include "text/OutputFile.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

fs::path PlaceFor(const ViewOptions& options)
{
    fs::path named = options.machine.file.stem();
    named += ".html";
    return options.output.value_or(named);
}

} // namespace

ExitCode View(const ViewOptions& options, std::ostream& out)
{
    const std::string_view html = PageFor("trunnion view", options.page);
    const WatchedFile machineFile(options.machine.file);
    const LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const std::string digest = machineFile.Digest();
    const fs::path place = PlaceFor(options);
    RefuseOverwriting({place}, {options.machine.file});
    OutputFile page(place);
    WritePage(html, {machine, {options.machine.file.string(), digest}, options.version}, nullptr,
              [&page](std::string_view text) { page.Write(text); });
    page.Finish();
    out << "the machine is in " << place.string() << "; open it in a browser\n";
    return kExitOk;
}

} // namespace host
