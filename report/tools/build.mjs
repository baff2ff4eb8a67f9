// Bundles the page into one HTML file, the template into which the program puts its data.
//
//   node tools/build.mjs --outfile=PATH    otherwise dist/report.html
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { dirname, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const root = resolve(dirname(fileURLToPath(import.meta.url)), '..');
const PLACE_OF_DATA = '@TRUNNION_DATA@';

function outfile(words) {
  const prefix = '--outfile=';
  const unknown = words.find((word) => !word.startsWith(prefix));
  if (unknown !== undefined) {
    throw new Error(`unknown argument '${unknown}'; give --outfile=PATH or nothing`);
  }
  const path = words.at(-1)?.slice(prefix.length);
  return path ? resolve(path) : resolve(root, 'dist/report.html');
}

async function bundle(entry) {
  const result = await build({
    entryPoints: [resolve(root, entry)],
    bundle: true,
    minify: true,
    write: false,
    format: 'iife',
    target: ['es2022'],
    charset: 'ascii',
    legalComments: 'inline',
    logLevel: 'warning',
  });
  return result.outputFiles[0].text;
}

function fill(template, place, text) {
  const parts = template.split(place);
  if (parts.length !== 2) {
    throw new Error(`${place} stands ${parts.length - 1} times in the page, and should once`);
  }
  return parts.join(text);
}

const [template, script, style] = await Promise.all([
  readFile(resolve(root, 'src/page.html'), 'utf8'),
  bundle('src/main.ts'),
  bundle('src/styles.css'),
]);
const page = fill(fill(template, '/*STYLE*/', style), '/*SCRIPT*/', script);
fill(page, PLACE_OF_DATA, '');
const path = outfile(process.argv.slice(2));
await mkdir(dirname(path), { recursive: true });
await writeFile(path, page);
