const MINUS = '\u2212';

/// As the joint table has it: all of its decimals.
export function exact(value: number, decimals: number): string {
  return withMinus(value.toFixed(decimals));
}

/// Of up to `decimals` decimals, without zeros at the end.
export function short(value: number, decimals = 3): string {
  return withMinus(String(Number(value.toFixed(decimals))));
}

/// A small error to three digits.
export function small(value: number): string {
  if (value === 0) {
    return '0';
  }
  return withMinus(Math.abs(value) >= 1e-3 ? String(Number(value.toPrecision(3))) : value.toExponential(2).replace(/\.?0+e/, 'e'));
}

export function count(value: number): string {
  return value.toLocaleString('en-US').replaceAll(',', '\u202f');
}

export function clock(seconds: number): string {
  const whole = Math.floor(seconds);
  const pad = (part: number): string => String(part).padStart(2, '0');
  const hours = Math.floor(whole / 3600);
  const rest = `${pad(Math.floor(whole / 60) % 60)}:${pad(whole % 60)}`;
  return hours > 0 ? `${hours}:${rest}` : rest;
}

export function limitsText(limits: readonly [number | null, number | null]): string {
  const [low, high] = limits;
  if (low === null && high === null) {
    return 'unlimited';
  }
  const side = (value: number | null): string => (value === null ? 'no end' : short(value, 4));
  return `${side(low)} to ${side(high)}`;
}

function withMinus(text: string): string {
  return text.startsWith('-') ? MINUS + text.slice(1) : text;
}
