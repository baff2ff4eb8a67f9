/// What machine pages and run pages have in common: the drawing, its tools, the theme and the help.

import { button, byId, element, iconButton, setText } from '../base/dom.ts';
import type { ReportData } from '../data/contract.ts';
import type { Kinematics } from '../motion/kinematics.ts';
import { layoutMachine, type PathExtent } from '../scene/layout.ts';
import { MachineView, type CameraOn } from '../scene/MachineView.ts';
import type { Side, UpAxis } from '../scene/Viewpoint.ts';
import { ThemeSwitch } from '../ui/ThemeSwitch.ts';
import { helpDialog } from '../ui/help.ts';
import type { KeyActions } from '../ui/keys.ts';

const SIDES: readonly Side[] = ['oblique', 'front', 'right', 'top'];
const UPS: readonly UpAxis[] = ['z', 'x', 'y'];

export class Stage {
  readonly view: MachineView | null;
  readonly theme: ThemeSwitch;
  private readonly help: HTMLDialogElement;
  private readonly cameraButton: HTMLButtonElement;
  private readonly upButton: HTMLButtonElement;
  private cameraOn: CameraOn = 'machine';
  private up: UpAxis = 'z';
  private themeListeners: (() => void)[] = [];

  constructor(
    report: ReportData,
    kinematics: Kinematics,
    extents: ReadonlyMap<string, PathExtent>,
    isRun: boolean,
  ) {
    const layout = layoutMachine(report.machine, extents);
    this.size = layout.size;
    this.view = openView(() => new MachineView(report.machine, kinematics, layout, byId('stage')));
    this.help = helpDialog(isRun);
    document.body.append(this.help);
    this.cameraButton = button('', '', () => this.toggleCamera());
    this.upButton = button('', '', () => this.turnUp());
    this.theme = new ThemeSwitch((theme) => {
      this.view?.setTheme(theme);
      this.themeListeners.forEach((listener) => listener());
    });
    byId('header-tools').append(
      iconButton('theme', 'Light or dark', () => this.theme.toggle(), 'T'),
      button('?', 'Keys and pointer', () => this.help.showModal(), '?'),
    );
    if (this.view !== null) {
      byId('view-tools').append(
        this.cameraButton,
        this.upButton,
        button('Work', 'Close to the work', () => this.view?.closeUp(), 'G'),
        button('All', 'All of the machine', () => this.view?.fit(), 'F'),
      );
    }
    this.showChoices();
  }

  readonly size: number;

  onTheme(listener: () => void): void {
    this.themeListeners.push(listener);
    listener();
  }

  keys(): KeyActions {
    const turn = 6;
    const sides = SIDES.map((side, index): [string, () => void] => [
      String(index + 1),
      () => this.view?.look(side),
    ]);
    return {
      ...Object.fromEntries(sides),
      f: () => this.view?.fit(),
      g: () => this.view?.closeUp(),
      c: () => this.toggleCamera(),
      u: () => this.turnUp(),
      a: () => this.view?.orbit(-turn, 0),
      d: () => this.view?.orbit(turn, 0),
      w: () => this.view?.orbit(0, turn),
      s: () => this.view?.orbit(0, -turn),
      '+': () => this.view?.zoom(1.15),
      '=': () => this.view?.zoom(1.15),
      '-': () => this.view?.zoom(1 / 1.15),
      t: () => this.theme.toggle(),
      '?': () => this.help.showModal(),
    };
  }

  private toggleCamera(): void {
    this.cameraOn = this.cameraOn === 'machine' ? 'part' : 'machine';
    this.view?.setCameraOn(this.cameraOn);
    this.showChoices();
  }

  private turnUp(): void {
    this.up = UPS[(UPS.indexOf(this.up) + 1) % UPS.length]!;
    this.view?.setUp(this.up);
    this.showChoices();
  }

  private showChoices(): void {
    describe(this.cameraButton, `Camera: ${this.cameraOn}`, 'Camera on the machine or on the part', 'C');
    describe(this.upButton, `Up: ${this.up.toUpperCase()}`, 'Which axis points up', 'U');
  }
}

function describe(target: HTMLButtonElement, text: string, label: string, key: string): void {
  setText(target, text);
  target.setAttribute('aria-label', `${label}; now ${text}`);
  target.title = `${label} (${key})`;
}

/// Where the browser draws nothing in three dimensions, says so in its place.
function openView(make: () => MachineView): MachineView | null {
  try {
    return make();
  } catch {
    byId('stage').replaceChildren(
      element(
        'p',
        { class: 'notice', id: 'no-webgl' },
        'This browser offers no WebGL here, so the machine is not drawn. All else on this page works.',
      ),
    );
    return null;
  }
}

export function eachFrame(action: (now: number) => void): void {
  const next = (now: number): void => {
    action(now);
    requestAnimationFrame(next);
  };
  requestAnimationFrame(next);
}
