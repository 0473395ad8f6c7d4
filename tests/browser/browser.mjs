// Reports in Chromium, with everything noted that a page must not do.

import { chromium } from 'playwright-core';
import { pathToFileURL } from 'node:url';

/** Chromium's sandbox needs a user other than root. */
export const launch = () =>
  chromium.launch({ executablePath: '/usr/bin/chromium', args: process.getuid() === 0 ? ['--no-sandbox'] : [] });

/**
 * Opens a report. `complaints` fills with whatever the page writes to the console, throws or asks for: nothing of this
 * may happen. A text that came to run would call intruder().
 */
export async function open(browser, file, { width = 1600, scheme = 'light', ...context } = {}) {
  const tab = await browser.newContext({
    viewport: { width, height: 1000 }, colorScheme: scheme, reducedMotion: 'reduce', serviceWorkers: 'allow', ...context });
  const page = await tab.newPage();
  const complaints = [];
  const url = pathToFileURL(file).href;
  page.on('console', (message) => complaints.push(`console: ${message.type()}: ${message.text()}`));
  page.on('pageerror', (error) => complaints.push(`error: ${error.message}`));
  page.on('dialog', (dialog) => dialog.dismiss());
  page.on('dialog', (dialog) => complaints.push(`dialog: ${dialog.message()}`));
  page.on('popup', () => complaints.push('popup'));
  page.on('request', (request) => request.url() === url || complaints.push(`request: ${request.url().slice(0, 200)}`));
  page.on('websocket', (socket) => complaints.push(`websocket: ${socket.url()}`));
  await page.exposeFunction('intruder', () => complaints.push('a text of the input has run'));
  await page.goto(url);
  return { page, complaints, close: () => tab.close() };
}
