"""The mill of the examples. Lengths are millimetres, angles radians.

  base -- X -- Y -- Z -- spindle                    tool side, its nose at machine zero
    '---- A (about x) -- C (about z) -- table       part side, turning about machine zero
"""

from trunnion import (
    IkBody, IkChain, IkEndState, IkJoint, IkJtPrism, IkJtRot, IkMachine, IkStream, IkXformMat
)


class ExampleMill:
    def __init__(self):
        base = IkBody("base")
        self.x = self._hang(base, IkJtPrism("X"), IkJoint.JtPrimTransX, -500, 500)
        self.y = self._hang(self.x, IkJtPrism("Y"), IkJoint.JtPrimTransY, -500, 500)
        self.z = self._hang(self.y, IkJtPrism("Z"), IkJoint.JtPrimTransZ, -500, 500)
        turn = 6.28318530717958
        self.a = self._hang(base, IkJtRot("A"), IkJoint.JtPrimRotX, -2, 2)
        self.c = self._hang(self.a, IkJtRot("C"), IkJoint.JtPrimRotZ, -turn, turn)
        self.stream = IkStream()
        for tip in (self.z, self.c):  # the tool's chain first
            chain = IkChain()
            chain.FillFromBase2Node(tip)
            self.stream.AddChain(chain)
        self.machine = IkMachine()
        self.machine.SetBaseNode(base)
        self.machine.AddStream(self.stream)

    @staticmethod
    def _hang(parent, joint, primitive, low, high):
        joint.SetJtPrimitive(primitive)
        joint.SetBounds(low, high)
        parent.AddChild(joint)
        return joint

    @staticmethod
    def leaning_tool(x):
        """A tool at (x, 20, 10) of the part that leans by half a radian. Its position and direction
        count."""
        part_to_tool = IkXformMat.Translate(x, 20, 10)
        part_to_tool.RotZThis(0.7)
        part_to_tool.RotXThis(0.5)
        return IkEndState(part_to_tool)
