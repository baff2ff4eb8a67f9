/// One key, one action, wherever the focus is, but where somebody types.

export type KeyActions = Readonly<Record<string, () => void>>;

export function listenToKeys(actions: KeyActions): void {
  document.addEventListener('keydown', (event) => {
    const target = event.target instanceof Element ? event.target : null;
    if (event.ctrlKey || event.metaKey || event.altKey || isTakenBy(target, event.key)) {
      return;
    }
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const action = actions[event.shiftKey && key.length > 1 ? `Shift+${key}` : key];
    if (action !== undefined) {
      event.preventDefault();
      action();
    }
  });
}

/// What the element in focus does with the key itself.
function isTakenBy(target: Element | null, key: string): boolean {
  if (target === null || document.querySelector('dialog[open]') !== null) {
    return target !== null;
  }
  if (target.matches('input[type=number], select, textarea')) {
    return true;
  }
  if (target.matches('input[type=range]')) {
    return !target.matches('.scrubber') && (key.startsWith('Arrow') || key === 'Home' || key === 'End');
  }
  return target.matches('button, a, summary') && (key === ' ' || key === 'Enter');
}
