/// Elements, made without any text being read as markup.

type Attributes = Readonly<Record<string, string>>;
type Child = Node | string;

export function element<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

export function button(text: string, label: string, onClick: () => void, key = ''): HTMLButtonElement {
  const made = element('button', { type: 'button' }, text);
  if (text.length <= 1) {
    made.setAttribute('aria-label', label);
  }
  made.title = key === '' ? label : `${label} (${key})`;
  made.addEventListener('click', onClick);
  return made;
}

export function byId<T extends HTMLElement = HTMLElement>(id: string): T {
  const found = document.getElementById(id);
  if (found === null) {
    throw new Error(`the page lacks #${id}`);
  }
  return found as T;
}

/// Sets the text only where it differs.
export function setText(target: Node, text: string): void {
  if (target.textContent !== text) {
    target.textContent = text;
  }
}

export function svgIcon(viewBox: string, className: string, path: string): SVGSVGElement {
  const space = 'http://www.w3.org/2000/svg';
  const svg = document.createElementNS(space, 'svg');
  svg.setAttribute('viewBox', viewBox);
  svg.setAttribute('class', className);
  svg.setAttribute('aria-hidden', 'true');
  const shape = document.createElementNS(space, 'path');
  shape.setAttribute('d', path);
  svg.append(shape);
  return svg;
}

export type ControlIcon = keyof typeof CONTROL_SHAPES;

const CONTROL_SHAPES = {
  play: 'M4 2.5 13 8 4 13.5Z',
  pause: 'M4 3h3v10H4ZM9 3h3v10H9Z',
  back: 'M10.5 3v10L4 8Z',
  on: 'M5.5 3v10L12 8Z',
  eventBefore: 'M3 3h2v10H3ZM13 3v10L6 8Z',
  nextEvent: 'M11 3h2v10h-2ZM3 3v10l7-5Z',
  theme: 'M8 1.5A6.5 6.5 0 1 0 8 14.5 6.5 6.5 0 1 0 8 1.5ZM8 3A5 5 0 0 1 8 13Z',
} as const;

export function controlIcon(name: ControlIcon): SVGSVGElement {
  return svgIcon('0 0 16 16', 'icon', CONTROL_SHAPES[name]);
}

export function iconButton(
  icon: ControlIcon,
  label: string,
  onClick: () => void,
  key: string,
): HTMLButtonElement {
  const made = button('', label, onClick, key);
  made.append(controlIcon(icon));
  return made;
}
