#ifndef TRUNNION_TESTS_SUPPORT_LOADED_FIXTURE_H
#define TRUNNION_TESTS_SUPPORT_LOADED_FIXTURE_H

#include <utility>

#include "machine/LoadedMachine.h"
#include "support/Fixtures.h"

namespace test
{

/// A fixture as the program holds a machine that it has read. Its axes start at 0; its tool has no
/// tip that a length moves.
inline host::LoadedMachine Loaded(Fixture fixture)
{
    host::LoadedMachine loaded;
    loaded.file = fixture.name;
    loaded.name = fixture.name;
    host::LoadedStream stream;
    stream.id = fixture.stream->GetId();
    stream.stream = fixture.stream;
    stream.toolChain = std::move(fixture.toolChain);
    stream.partChain = std::move(fixture.partChain);
    for (IkJoint* joint : fixture.joints) {
        host::Axis axis;
        const std::wstring name = joint->GetName(); // plain letters in all fixtures
        axis.name.assign(name.begin(), name.end());
        axis.isRotary = joint->IsRotary();
        axis.joint = joint;
        stream.axes.push_back(loaded.axes.size());
        loaded.axes.push_back(axis);
    }
    loaded.streams.push_back(std::move(stream));
    loaded.machine = std::move(fixture.machine);
    return loaded;
}

} // namespace test

#endif
