import { button, element } from '../base/dom.ts';

const RUN_KEYS: readonly (readonly [string, string])[] = [
  ['Space', 'play or pause'],
  ['\u2190 \u2192', 'a row back or on; with Shift ten'],
  ['Home End', 'the first row, the last'],
  ['N P', 'the next event, the one before'],
  [', .', 'play slower, faster'],
];

const VIEW_KEYS: readonly (readonly [string, string])[] = [
  ['F G', 'all of the machine, or close to the work'],
  ['C', 'camera on the machine or on the part'],
  ['1 2 3 4', 'look from the corner, the front, the right, the top'],
  ['U', 'which axis of the machine points up'],
  ['W A S D', 'turn the drawing'],
  ['+ \u2212', 'zoom in, zoom out'],
  ['T', 'light or dark'],
  ['?', 'this list'],
];

const POINTER: readonly (readonly [string, string])[] = [
  ['drag', 'turn the drawing; with the right button or two fingers move it'],
  ['wheel, pinch', 'zoom the drawing'],
  ['drag over a plot', 'look closer; a double click shows all of it again'],
  ['hover', 'over a plot, the toolpath or the table: everything shows that row; a click stays there'],
];

export function helpDialog(isRun: boolean): HTMLDialogElement {
  const dialog = element('dialog', { class: 'help', 'aria-labelledby': 'help-title' });
  const table = (entries: readonly (readonly [string, string])[]): HTMLElement => {
    const list = element('dl');
    for (const [key, what] of entries) {
      const keys = key.split(' ').map((one) => element('kbd', {}, one));
      list.append(element('div', {}, element('dt', {}, ...keys), element('dd', {}, what)));
    }
    return list;
  };
  const pointer = element('dl');
  for (const [how, what] of isRun ? POINTER : POINTER.slice(0, 2)) {
    pointer.append(element('div', {}, element('dt', {}, how), element('dd', {}, what)));
  }
  dialog.append(
    element('h2', { id: 'help-title' }, 'Keys and pointer'),
    ...(isRun ? [table(RUN_KEYS)] : []),
    table(VIEW_KEYS),
    pointer,
    element(
      'p',
      {},
      'Arrows and signs at the axes give the way in which the body itself moves for a positive value. ' +
        'Playing keeps to the programmed feed where the toolpath has one and to nominal rates elsewhere, ' +
        'without accelerations: it is not a cycle time.',
    ),
    button('Close', 'Close', () => dialog.close(), 'Esc'),
  );
  return dialog;
}
