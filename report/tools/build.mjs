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

/// What the licences of the packages in the page ask for.
async function notices() {
  const { dependencies } = JSON.parse(await readFile(resolve(root, 'package.json'), 'utf8'));
  const texts = Object.keys(dependencies).map(async (name) => {
    const text = await readFile(resolve(root, 'node_modules', name, 'LICENSE'), 'utf8');
    return `${name}\n\n${text.trim()}\n`;
  });
  return `/*\n${(await Promise.all(texts)).join('\n')}*/`;
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
    legalComments: 'none',
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
const styled = fill(template, '/*STYLE*/', style);
const page = fill(styled, '/*SCRIPT*/', `${await notices()}\n${script}`);
fill(page, PLACE_OF_DATA, '');
const path = outfile(process.argv.slice(2));
await mkdir(dirname(path), { recursive: true });
await writeFile(path, page);
