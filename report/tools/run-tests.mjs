// Bundles the tests of a folder and runs them with node's own runner, so that they can be written in
// TypeScript whatever the version of node.
import { spawnSync } from 'node:child_process';
import { mkdirSync, readdirSync, rmSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const root = resolve(dirname(fileURLToPath(import.meta.url)), '..');
const folder = process.argv[2];
const bundles = join(root, 'dist', folder);
rmSync(bundles, { recursive: true, force: true });
mkdirSync(bundles, { recursive: true });
const entries = readdirSync(join(root, folder)).filter((name) => name.endsWith('.test.ts'));
await build({
  entryPoints: entries.map((name) => join(root, folder, name)),
  outdir: bundles,
  outExtension: { '.js': '.mjs' },
  bundle: true,
  platform: 'node',
  format: 'esm',
  target: 'node18',
  external: ['playwright-core'],
  sourcemap: 'inline',
  logLevel: 'warning',
});
const files = entries.map((name) => join(bundles, name.replace(/\.ts$/, '.mjs')));
const done = spawnSync(process.execPath, ['--enable-source-maps', '--test', ...files], {
  cwd: root,
  stdio: 'inherit',
});
process.exit(done.status ?? 1);
