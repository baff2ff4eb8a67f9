import { byId } from '../base/dom.ts';
import type { ReportData } from '../data/contract.ts';
import { Kinematics } from '../motion/kinematics.ts';
import { Jog } from '../ui/Jog.ts';
import { listenToKeys } from '../ui/keys.ts';
import { listenToPrinting } from '../ui/printing.ts';
import type { Inspection } from './inspect.ts';
import { Stage, eachFrame } from './Stage.ts';

export function startMachine(report: ReportData): Inspection {
  const kinematics = new Kinematics(report.machine);
  const stage = new Stage(report, kinematics, new Map(), false);
  const { view } = stage;
  const jog = new Jog(byId('jog-body'), report.machine, kinematics, stage.size, (jogged) =>
    view?.show({ ...jogged, row: 0 }),
  );
  view?.start({ ...jog.jogged, row: 0 }, stage.theme.theme);
  listenToKeys(stage.keys());
  listenToPrinting(stage.theme, view, []);
  eachFrame(() => view?.frame());
  return {
    kind: 'machine',
    rowCount: 0,
    things: () => view?.things() ?? [],
    still: () => view?.still() ?? null,
    setAxis: (index, value) => jog.set(index, value),
  };
}
