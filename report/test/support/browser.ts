/// A browser without a network of its own, which draws in software.

import { chromium, type Browser, type Page } from 'playwright-core';

const QUIET = [
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-default-apps',
  '--disable-sync',
  '--no-first-run',
  '--no-pings',
];
const SOFTWARE_GL = ['--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--ignore-gpu-blocklist'];

export function openBrowser(withWebGl = true): Promise<Browser> {
  const asRoot = process.getuid?.() === 0 ? ['--no-sandbox'] : [];
  const gl = withWebGl ? SOFTWARE_GL : ['--disable-gpu', '--disable-3d-apis'];
  return chromium.launch({
    executablePath: process.env['CHROMIUM'] ?? '/usr/bin/chromium',
    args: [...QUIET, ...asRoot, ...gl],
  });
}

export interface OpenOptions {
  readonly width?: number;
  readonly height?: number;
  readonly colorScheme?: 'light' | 'dark';
}

/// A page and what went wrong on it.
export interface Opened {
  readonly page: Page;
  readonly complaints: string[]; // of the console, of scripts, and requests that leave the file
}

export async function openPage(browser: Browser, file: string, options: OpenOptions = {}): Promise<Opened> {
  const context = await browser.newContext({
    viewport: { width: options.width ?? 1280, height: options.height ?? 800 },
    colorScheme: options.colorScheme ?? 'light',
  });
  const page = await context.newPage();
  const url = `file://${file}`;
  const complaints: string[] = [];
  page.on('console', (message) => {
    if (message.type() === 'error' || message.type() === 'warning') {
      // What the software renderer says about itself when pixels are read back.
      if (!message.text().includes('GPU stall due to ReadPixels')) {
        complaints.push(`console: ${message.text()}`);
      }
    }
  });
  page.on('pageerror', (error) => complaints.push(`script: ${error.message}`));
  page.on('request', (request) => {
    if (request.url() !== url && !/^(data|blob):/.test(request.url())) {
      complaints.push(`request: ${request.url()}`);
    }
  });
  await page.goto(url);
  await page.waitForSelector('html[data-ready=yes]', { timeout: 60_000 });
  return { page, complaints };
}
