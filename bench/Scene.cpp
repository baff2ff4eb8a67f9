#include "Scene.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "Decompositions.h"
#include "KdlSolvers.h"
#include "LibrarySolvers.h"
#include "PlainSolvers.h"
#include "Stages.h"
#include "support/Bits.h"

namespace bench
{

namespace
{

using SharedTask = std::shared_ptr<const Task>;
using SharedSolver = std::shared_ptr<PoseSolver>;

constexpr int kLastPass = 20; // of the solves whose passes are measured

/// What came of each solve of a task: nothing where it failed.
using Outcome = std::optional<JointValues>;

std::vector<Outcome> OutcomesOf(const Task& task, PoseSolver& solver)
{
    std::vector<Outcome> outcomes;
    SolveAll(task, solver, [&](std::size_t /*target*/, bool isSolved) {
        outcomes.push_back(isSolved ? Outcome(solver.Answer()) : std::nullopt);
    });
    return outcomes;
}

double ShareMet(const Subject& subject, const Task& task, const std::vector<Outcome>& outcomes)
{
    int met = 0;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        met += outcomes[i] && Meets(subject, *outcomes[i], task.targets[i]) ? 1 : 0;
    }
    return static_cast<double>(met) / static_cast<double>(outcomes.size());
}

bool AreSame(const Outcome& a, const Outcome& b)
{
    return a.has_value() == b.has_value() &&
           (!a || std::equal(a->begin(), a->end(), b->begin(), b->end(), [](double x, double y) {
               return test::BitsOf(x) == test::BitsOf(y);
           }));
}

void RequireSame(const Scene& scene, const Task& task, PoseSolver& library, PoseSolver& plain)
{
    const std::vector<Outcome> a = OutcomesOf(task, library);
    const std::vector<Outcome> b = OutcomesOf(task, plain);
    if (!std::equal(a.begin(), a.end(), b.begin(), b.end(), AreSame)) {
        throw std::runtime_error(scene.operation + " of " + scene.subject->name +
                                 ": library and plain formulation differ");
    }
}

Contender ContenderOf(const char* name, const Subject& subject, const SharedTask& task,
                      const SharedSolver& solver)
{
    const double solved = ShareMet(subject, *task, OutcomesOf(*task, *solver));
    return {name, [task, solver] { SolveAll(*task, *solver, [](std::size_t, bool) {}); }, solved};
}

Contender JamaContender(Matrices matrices)
{
    const auto shared = std::make_shared<const Matrices>(std::move(matrices));
    return {kJama, [shared] { Decompose(*shared); }};
}

PassObserver Into(Matrices& matrices)
{
    return
        [&matrices](const TNT::Array2D<double>& jacobian) { matrices.push_back(Tall(jacobian)); };
}

/// Library, plain formulation, the decompositions of the latter's passes.
Scene SolveScene(const char* operation, const Subject& subject, const SharedTask& task,
                 const SharedSolver& library, const SharedSolver& plain, PoseSolver& recorder,
                 Matrices& recorded)
{
    Scene scene{operation, &subject, static_cast<int>(task->targets.size()), {}};
    RequireSame(scene, *task, *library, *plain);
    RequireSame(scene, *task, *library, recorder);
    scene.contenders.push_back(ContenderOf(kLibrary, subject, task, library));
    scene.contenders.push_back(ContenderOf(kPlain, subject, task, plain));
    scene.contenders.push_back(JamaContender(std::move(recorded)));
    return scene;
}

void AddKdl(Scene& scene, const SharedTask& task)
{
    const Subject& subject = *scene.subject;
    if (SharedSolver newton = MakeKdlNewton(subject, *task)) {
        scene.contenders.push_back(ContenderOf(kKdlNewton, subject, task, newton));
    }
    if (SharedSolver marquardt = MakeKdlLevenbergMarquardt(subject, *task)) {
        scene.contenders.push_back(ContenderOf(kKdlMarquardt, subject, task, marquardt));
    }
}

Scene StreamScene(const char* operation, const Subject& subject, const SharedTask& task)
{
    Matrices recorded;
    const auto recorder = MakeObserver(subject, *task, kStreamCriteria, Into(recorded));
    Scene scene = SolveScene(operation, subject, task, MakeStreamSolver(subject, *task),
                             MakePlainStreamSolver(subject, *task), *recorder, recorded);
    AddKdl(scene, task);
    return scene;
}

Scene ObjectScene(const char* operation, const Subject& subject, const SharedTask& task)
{
    Matrices recorded;
    const auto recorder = MakeObserver(subject, *task, kSolverCriteria, Into(recorded));
    return SolveScene(operation, subject, task, MakeSolverObject(subject, *task),
                      MakePlainSolverObject(subject, *task), *recorder, recorded);
}

Scene HybridScene(const Subject& subject, const SharedTask& task)
{
    Matrices recorded;
    const auto recorder = MakeHybridObserver(subject, *task, Into(recorded));
    return SolveScene(kHybrid, subject, task, MakeHybridSolver(subject, *task),
                      MakePlainHybridSolver(subject, *task), *recorder, recorded);
}

Scene ForwardScene(const Subject& subject, int poses)
{
    const std::vector<JointValues> joints = RandomJoints(subject, poses);
    Scene scene{kForward, &subject, poses, {}};
    scene.contenders.push_back({kLibrary, LibraryForward(subject, joints)});
    scene.contenders.push_back({kPlain, PlainForward(subject, joints)});
    CheckKdlChain(subject, joints);
    if (auto forward = KdlForward(subject, joints)) {
        scene.contenders.push_back({kKdlNewton, forward});
    }
    return scene;
}

Scene JacobianScene(const Subject& subject, int count)
{
    Scene scene{kJacobian, &subject, count, {}};
    scene.contenders.push_back({kLibrary, LibraryJacobian(subject, count)});
    scene.contenders.push_back({kPlain, PlainJacobian(subject, count)});
    return scene;
}

} // namespace

const Contender* Scene::Find(const std::string& name) const
{
    const auto found =
        std::find_if(contenders.begin(), contenders.end(),
                     [&name](const Contender& contender) { return contender.name == name; });
    return found == contenders.end() ? nullptr : &*found;
}

Scene PassScene(const Subject& subject, const Effort& effort)
{
    constexpr int kOneIn = 12; // of a path's targets
    const auto task = std::make_shared<const Task>(WarmTask(subject, effort.warmTargets / kOneIn));
    Matrices recorded;
    const auto recorder = MakeObserver(subject, *task, Unending(kLastPass), Into(recorded));
    Scene scene =
        SolveScene(kPass, subject, task, MakeUnendingSolver(subject, *task, kLastPass),
                   MakePlainUnendingSolver(subject, *task, kLastPass), *recorder, recorded);
    scene.calls *= kLastPass + 1;
    for (Contender& contender : scene.contenders) {
        contender.solved.reset(); // it is not to end
    }
    return scene;
}

std::vector<Scene> ScenesOf(const Subject& subject, const Effort& effort)
{
    const auto cold = std::make_shared<const Task>(ColdTask(subject, effort.coldTargets));
    const auto warm = std::make_shared<const Task>(WarmTask(subject, effort.warmTargets));
    const auto few = std::make_shared<const Task>(ColdTask(subject, effort.hybridTargets));
    return {ForwardScene(subject, effort.poses),
            JacobianScene(subject, effort.poses),
            PassScene(subject, effort),
            StreamScene(kStreamCold, subject, cold),
            StreamScene(kStreamWarm, subject, warm),
            ObjectScene(kObjectCold, subject, cold),
            ObjectScene(kObjectWarm, subject, warm),
            HybridScene(subject, few)};
}

} // namespace bench
