"""Compares the classes that the shared library exports, and what it leaks, with what it should.

usage: check_exports.py LIBRARY
"""

import re
import subprocess
import sys

CLASSES = {
    "IkBody", "IkChain", "IkEndState", "IkJoint", "IkJtPrism", "IkJtRot", "IkJtState",
    "IkJtStateVector", "IkMachine", "IkNode", "IkSolutionAnalyst", "IkSolver", "IkSolverHybrid",
    "IkSolverPsuedoInverse", "IkStream", "IkXformMat",
    "TNT::Matrix<double>", "TNT::Vector<double>", "TNT::Array1D<double>",
}

# One member of each instantiated type that is easily lost: a const accessor, which some compilers
# hide when any source includes the toolkit without the export declaration.
REQUIRED = {
    "TNT::Matrix<double>::num_rows() const",
    "TNT::Matrix<double>::operator[](int) const",
    "TNT::Vector<double>::size() const",
    "TNT::Array1D<double>::dim1() const",
    "TNT::Array1D<double>::operator[](int) const",
    "IkStream::SolveIK(IkEndState&, IkJtStateVector&, bool, IkJoint::JointLimitTypes, bool)",
    "vtable for IkNode",
}


def main():
    listing = subprocess.run(["nm", "-DC", "--defined-only", sys.argv[1]], check=True,
                             capture_output=True, text=True).stdout
    symbols = {line.split(maxsplit=2)[2] for line in listing.splitlines()}
    exported = set()
    failures = []
    for symbol in sorted(symbols):
        name = re.sub(r"^(vtable|typeinfo|typeinfo name) for ", "", symbol)
        owner = re.match(r"(Ik\w+|TNT::\w+<double>)(::|$)", name)
        if owner is None or owner.group(1) not in CLASSES:
            failures.append(f"exported by accident: {symbol}")
        else:
            exported.add(owner.group(1))
    failures += [f"not exported: {name}" for name in sorted((CLASSES - exported) |
                                                            (REQUIRED - symbols))]
    print("\n".join(failures) or f"{len(symbols)} symbols of {len(exported)} classes")
    return 1 if failures else 0


sys.exit(main())
