/// Colours that people who see red and green alike can tell apart, for either theme.

export type Theme = 'light' | 'dark';

const AXIS_COLORS = {
  light: ['#0067a5', '#b45309', '#007a5e', '#a3366f', '#5b5bd6', '#8a6d00', '#0e7490', '#7c3aed'],
  dark: ['#5cb3f0', '#f0a24a', '#3ecfa5', '#e88abb', '#a3a3ff', '#e0c34c', '#4fd1e0', '#c4a2ff'],
} as const;

export function axisColor(index: number, theme: Theme): string {
  const colors = AXIS_COLORS[theme];
  return colors[index % colors.length]!;
}

export interface ScenePalette {
  readonly background: string;
  readonly floor: string;
  readonly floorLines: string;
  readonly tool: string;
  readonly part: string;
  readonly base: string;
  readonly cutter: string;
  readonly ahead: string;
  readonly done: string;
  readonly rapid: string;
  readonly failed: string;
  readonly text: string;
  readonly halo: string;
}

export const SCENE: Readonly<Record<Theme, ScenePalette>> = {
  light: {
    background: '#eef1f4',
    floor: '#c9d0d8',
    floorLines: '#dbe0e6',
    tool: '#aab6c4',
    part: '#c9bda6',
    base: '#c3c9d1',
    cutter: '#39424e',
    ahead: '#8fa3b8',
    done: '#0067a5',
    rapid: '#c77d0a',
    failed: '#c11f3a',
    text: '#1b2430',
    halo: '#ffffff',
  },
  dark: {
    background: '#14181d',
    floor: '#39424d',
    floorLines: '#262d35',
    tool: '#7b8896',
    part: '#94866c',
    base: '#525c68',
    cutter: '#e4e9ee',
    ahead: '#5c6f84',
    done: '#5cb3f0',
    rapid: '#f0a24a',
    failed: '#ff6b7d',
    text: '#e8edf2',
    halo: '#14181d',
  },
};

export const EVENT_COLORS: Readonly<Record<Theme, Readonly<Record<string, string>>>> = {
  light: {
    failed: '#c11f3a',
    limit: '#b45309',
    pole: '#0067a5',
    flip: '#7c3aed',
    rewind: '#007a5e',
  },
  dark: {
    failed: '#ff6b7d',
    limit: '#f0a24a',
    pole: '#5cb3f0',
    flip: '#c4a2ff',
    rewind: '#3ecfa5',
  },
};
