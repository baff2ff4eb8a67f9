/// @file
/// Everything a host needs: includes the public headers and adds nothing.

#ifndef TRUNNION_IK_H
#define TRUNNION_IK_H

#include "IkChain.h"
#include "IkEndState.h"
#include "IkExport.h"
#include "IkJoint.h"
#include "IkJtState.h"
#include "IkMachine.h"
#include "IkNode.h"
#include "IkSolver.h"
#include "IkStream.h"
#include "IkXformMat.h"

#endif
