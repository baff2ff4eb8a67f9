/// A slider and a number for each axis, and where the tool then stands.

import type { AxisData, MachineData } from '../data/contract.ts';
import type { Kinematics, Workplace } from '../motion/kinematics.ts';
import { button, element, setText } from '../base/dom.ts';
import { exact, limitsText } from '../base/format.ts';

export interface Jogged {
  readonly values: readonly number[];
  readonly place: Workplace;
  readonly toolLength: number;
}

interface Control {
  readonly slider: HTMLInputElement;
  readonly field: HTMLInputElement;
}

export class Jog {
  private readonly values: number[];
  private readonly controls: Control[];
  private readonly pose = element('dl', { class: 'pose', 'aria-live': 'polite' });
  private stream: number;
  private toolLength = 0;

  constructor(
    holder: HTMLElement,
    private readonly machine: MachineData,
    private readonly kinematics: Kinematics,
    private readonly size: number,
    private readonly changed: (jogged: Jogged) => void,
  ) {
    this.values = kinematics.initialValues();
    this.stream = machine.streams[0]!.id;
    const table = element('div', { class: 'jog' });
    this.controls = machine.axes.map((axis, index) => this.addAxis(table, axis, index));
    holder.append(table, this.tools(), element('h3', {}, 'Where the tool stands'), this.pose);
    this.tell();
  }

  get jogged(): Jogged {
    return {
      values: this.values,
      place: this.kinematics.workplace(this.stream),
      toolLength: this.toolLength,
    };
  }

  set(index: number, value: number): void {
    const [low, high] = this.machine.axes[index]!.limits;
    const kept = Math.min(Math.max(value, low ?? -Infinity), high ?? Infinity);
    this.values[index] = kept;
    this.controls[index]!.slider.value = String(kept);
    this.controls[index]!.field.value = rounded(kept);
    this.tell();
  }

  private addAxis(table: HTMLElement, axis: AxisData, index: number): Control {
    const isLinear = axis.type === 'linear';
    const unit = isLinear ? this.machine.lengthUnit : 'deg';
    const open = isLinear ? this.size : 360;
    const [low, high] = [axis.limits[0] ?? -open, axis.limits[1] ?? open];
    const initial = rounded(axis.initial);
    const range = { min: String(low), max: String(high), value: initial };
    const slider = element('input', { type: 'range', step: 'any', ...range });
    slider.setAttribute('aria-label', `${axis.name} [${unit}]`);
    const field = element('input', { type: 'number', step: 'any', value: initial });
    field.setAttribute('aria-label', `${axis.name} [${unit}], as a number`);
    slider.addEventListener('input', () => this.set(index, slider.valueAsNumber));
    field.addEventListener('change', () => {
      this.set(index, Number.isFinite(field.valueAsNumber) ? field.valueAsNumber : this.values[index]!);
    });
    const swatch = element('i', { class: 'swatch' });
    swatch.style.setProperty('--axis', `var(--axis-${index % 8})`);
    const name = element('label', {}, swatch, element('b', {}, axis.name));
    table.append(
      element(
        'div',
        { class: 'jog-axis' },
        name,
        slider,
        field,
        element('span', { class: 'unit' }, unit),
        element('span', { class: 'limits' }, limitsText(axis.limits)),
      ),
    );
    return { slider, field };
  }

  private tools(): HTMLElement {
    const length = element('input', { type: 'number', min: '0', step: 'any', value: '0' });
    length.addEventListener('change', () => {
      this.toolLength = Math.max(Number.isFinite(length.valueAsNumber) ? length.valueAsNumber : 0, 0);
      length.value = String(this.toolLength);
      this.tell();
    });
    const unit = this.machine.lengthUnit;
    const tools = element(
      'div',
      { class: 'jog-tools' },
      element('label', {}, 'Tool length ', length, ` ${unit}`),
      button('To the initial values', 'Put every axis where the machine file starts it', () =>
        this.kinematics.initialValues().forEach((value, index) => this.set(index, value)),
      ),
    );
    if (this.machine.streams.length > 1) {
      tools.prepend(this.streamChoice());
    }
    return tools;
  }

  private streamChoice(): HTMLElement {
    const choice = element('select');
    for (const { id, tool, part } of this.machine.streams) {
      choice.append(element('option', { value: String(id) }, `${id}: ${tool} on ${part}`));
    }
    choice.addEventListener('change', () => {
      this.stream = Number(choice.value);
      this.tell();
    });
    return element('label', {}, 'Stream ', choice);
  }

  private tell(): void {
    const { place, toolLength } = this.jogged;
    const { position, direction } = this.kinematics.toolPose(place, toolLength, this.values);
    const unit = this.machine.lengthUnit;
    const entries = [
      ...['x', 'y', 'z'].map((name, k) => [name, `${exact(position[k]!, 6)} ${unit}`]),
      ...['i', 'j', 'k'].map((name, k) => [name, exact(direction[k]!, 9)]),
    ] as const;
    if (this.pose.childElementCount === 0) {
      entries.forEach(([name]) =>
        this.pose.append(element('div', {}, element('dt', {}, name!), element('dd'))),
      );
    }
    entries.forEach(([, text], k) => setText(this.pose.children[k]!.lastElementChild!, text!));
    this.changed(this.jogged);
  }
}

function rounded(value: number): string {
  return String(Number(value.toFixed(6)));
}
