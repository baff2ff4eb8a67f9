/// What only paper takes: light colours, all events in words, and a still of the drawing.

import type { EventData } from '../data/contract.ts';
import type { MachineView } from '../scene/MachineView.ts';
import { byId, element } from '../base/dom.ts';
import { EVENT_TITLES } from '../base/eventMarks.ts';
import type { ThemeSwitch } from './ThemeSwitch.ts';

const MOST_EVENTS = 300;

export function listenToPrinting(
  theme: ThemeSwitch,
  view: MachineView | null,
  events: readonly EventData[],
): void {
  const still = element('img', { class: 'still', alt: 'The machine at the row shown' });
  window.addEventListener('beforeprint', () => {
    theme.setPrinting(true);
    if (view !== null) {
      still.src = view.still();
      byId('stage').append(still);
    }
    if (events.length > 0) {
      listEvents(events);
    }
  });
  window.addEventListener('afterprint', () => {
    still.remove();
    theme.setPrinting(false);
  });
}

function listEvents(events: readonly EventData[]): void {
  const list = byId('events-print');
  const entries = events
    .slice(0, MOST_EVENTS)
    .map((event) =>
      element(
        'li',
        {},
        `${EVENT_TITLES[event.kind]}, line ${event.line}, row ${event.row + 1}: ${event.sentence}`,
      ),
    );
  if (events.length > MOST_EVENTS) {
    entries.push(element('li', {}, `and ${events.length - MOST_EVENTS} more`));
  }
  list.replaceChildren(...entries);
}
