// Any bytes as the text of each file that the program reads.

#include <string>

#include "fuzz/Targets.h"
#include "mutated/ReaderChecks.h"

namespace test
{

namespace
{

std::string Text(const std::uint8_t* bytes, std::size_t size)
{
    return {bytes, bytes + size};
}

} // namespace

void FuzzMachine(const std::uint8_t* bytes, std::size_t size)
{
    CheckMachineText(Text(bytes, size));
}

void FuzzUrdf(const std::uint8_t* bytes, std::size_t size)
{
    CheckUrdfText(Text(bytes, size));
}

void FuzzApt(const std::uint8_t* bytes, std::size_t size)
{
    CheckAptText(Text(bytes, size));
}

void FuzzCsv(const std::uint8_t* bytes, std::size_t size)
{
    CheckCsvText(Text(bytes, size));
}

void FuzzNc(const std::uint8_t* bytes, std::size_t size)
{
    CheckNcText(Text(bytes, size));
}

void FuzzTable(const std::uint8_t* bytes, std::size_t size)
{
    CheckJointTableText(Text(bytes, size));
}

void FuzzDialect(const std::uint8_t* bytes, std::size_t size)
{
    CheckDialectText(Text(bytes, size));
}

void FuzzVerification(const std::uint8_t* bytes, std::size_t size)
{
    CheckVerification(Text(bytes, size));
}

} // namespace test
