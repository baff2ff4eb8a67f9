#pragma once
#include "solve/PointSolver.h"
namespace host { class SampledSolver { public: explicit SampledSolver(PointSolver& s):p(s){} std::vector<JointValues> FindAll(const PathTarget& t){return p.SolveFromSamples(t,IkJoint::JtLimitAll);} private: PointSolver& p; }; }
