/// Reports that the real program writes of the bundled samples.

import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import type { ReportData } from '../../src/data/contract.ts';

export const ROOT = resolve(process.cwd(), '..');
export const ARTEFACTS = join(ROOT, 'build', 'report');

export interface Sample {
  readonly name: string;
  readonly machine: string;
  readonly toolpath: string;
  readonly more: readonly string[];
}

const sample = (machine: string, toolpath: string, ...more: string[]): Sample => ({
  name: machine.replace(/\..*$/, ''),
  machine: `samples/machines/${machine}`,
  toolpath: `samples/toolpaths/${toolpath}`,
  more,
});

export const SAMPLES: readonly Sample[] = [
  sample('trunnion-ac.toml', 'dome-over-the-top.cl'),
  sample('head-table-bc.toml', 'impeller-blade.cl'),
  sample('head-head-ca.toml', 'turbine-ring.cl'),
  sample('nutating-bc.toml', 'pocket-tilted-walls.cl'),
  sample('mill-turn-bc.toml', 'cylinder-engraving.cl'),
  sample('arm-positioner.urdf', 'bowl-trimming.cl', '--tool-link', 'spindle_nose', '--part-link', 'part'),
];

function program(): string {
  const path = resolve(process.env['TRUNNION'] ?? join(ROOT, 'build/release/host/trunnion'));
  if (!existsSync(path)) {
    throw new Error(`${path} is not built; TRUNNION may name another`);
  }
  return path;
}

/// What fails some points exits with 1.
function run(words: readonly string[], exitCode = 0): void {
  try {
    execFileSync(program(), words, { cwd: ROOT, stdio: ['ignore', 'pipe', 'pipe'] });
  } catch (error) {
    const { status, stderr } = error as { status?: number; stderr?: Buffer };
    if (status !== exitCode || exitCode === 0) {
      throw new Error(`${words.join(' ')}: exit ${status}\n${stderr?.toString() ?? ''}`);
    }
    return;
  }
  if (exitCode !== 0) {
    throw new Error(`${words.join(' ')}: should have failed`);
  }
}

export function artefact(name: string): string {
  const path = join(ARTEFACTS, name);
  mkdirSync(dirname(path), { recursive: true });
  return path;
}

export function solve(name: string, sampleOf: Omit<Sample, 'name'>, exitCode = 0): string {
  const file = artefact(`${name}.html`);
  const { machine, toolpath, more } = sampleOf;
  run(
    ['solve', machine, toolpath, '-o', artefact(`${name}.csv`), '--report', file, '--quiet', ...more],
    exitCode,
  );
  return file;
}

export function view(name: string, machine: string): string {
  const file = artefact(`${name}.html`);
  run(['view', machine, '-o', file]);
  return file;
}

const OPENING = '<script type="application/json" id="trunnion-data">';

function dataOf(html: string): { readonly begin: number; readonly end: number } {
  const begin = html.indexOf(OPENING) + OPENING.length;
  return { begin, end: html.indexOf('</script>', begin) };
}

export function readData(file: string): ReportData {
  const html = readFileSync(file, 'utf8');
  const { begin, end } = dataOf(html);
  return JSON.parse(html.slice(begin, end)) as ReportData;
}

/// The page of `file` with other data, written as the program writes them.
export function withData(file: string, name: string, data: ReportData): string {
  const html = readFileSync(file, 'utf8');
  const { begin, end } = dataOf(html);
  const text = JSON.stringify(data).replaceAll('<', '\\u003c');
  const made = artefact(`${name}.html`);
  writeFileSync(made, html.slice(0, begin) + text + html.slice(end));
  return made;
}

const MOST_BYTES = 8; // of a number below 2^53

/// Packs a column as the program does.
export function pack(values: ArrayLike<number>, decimals: number): { decimals: number; data: string } {
  const bytes = new Uint8Array(values.length * MOST_BYTES);
  let length = 0;
  let before = 0;
  for (let row = 0; row < values.length; ++row) {
    const whole = Math.round(values[row]! * 10 ** decimals);
    const difference = whole - before;
    before = whole;
    let zigzag = difference >= 0 ? 2 * difference : -2 * difference - 1;
    while (zigzag >= 128) {
      bytes[length++] = 128 + (zigzag % 128);
      zigzag = Math.floor(zigzag / 128);
    }
    bytes[length++] = zigzag;
  }
  return { decimals, data: Buffer.from(bytes.subarray(0, length)).toString('base64') };
}
