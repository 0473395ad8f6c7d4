// The report in Chromium: what a reader sees and does, with hostile texts, without a mouse, without script, on paper.

import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { after, before, describe, test } from 'node:test';
import { launch, open } from './browser.mjs';
import { makeReports, names } from './reports.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
const rules = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];
const looks = ['light', 'dark'].flatMap((scheme) => [400, 1600].map((width) => ({ scheme, width })));

const reports = makeReports();
let browser;
before(async () => { browser = await launch(); });
after(() => browser.close());

/** Opens a report, calls `look` with the page, and then wants no complaint about it. */
async function visit(name, options, look) {
  const { page, complaints, close } = await open(browser, reports[name].file, options);
  try {
    await look(page);
    assert.deepEqual(complaints, []);
  } finally {
    await close();
  }
}

const openTables = (page) => page.evaluate(() => document.querySelectorAll('details').forEach((each) => { each.open = true; }));

/** Charts without a line, bar or point, or too small to see. */
function blankCharts() {
  const rgb = (css) => {
    const context = new OffscreenCanvas(1, 1).getContext('2d');
    context.fillStyle = css;
    context.fillRect(0, 0, 1, 1);
    return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
  };
  const root = getComputedStyle(document.documentElement);
  const frame = ['--grid', '--rule'].map((name) => rgb(root.getPropertyValue(name)));  // dygraphs draws these without data
  const isFrame = (pixel) => frame.some((color) => color.every((part, i) => Math.abs(part - pixel[i]) < 12));
  const hasInk = (canvas) => {
    const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    let count = 0;
    for (let at = 0; at < data.length; at += 4) if (data[at + 3] > 50 && !isFrame(data.subarray(at, at + 3))) count += 1;
    return count > 10;
  };
  const hasShapes = (svg) => [...svg.querySelectorAll('.line, .mark, .dots')].some((shape) => shape.getBoundingClientRect().width > 0);
  const isDrawn = (chart) => {
    const plot = chart.querySelector('[role=img]');
    return plot.getBoundingClientRect().height > 40 &&
      ([...plot.querySelectorAll('canvas')].some(hasInk) || [...plot.querySelectorAll('svg')].some(hasShapes));
  };
  return [...document.querySelectorAll('[data-chart]')].filter((chart) => !isDrawn(chart)).map((chart) => chart.dataset.chart);
}

/** Rules of accessibility that are broken, and where. */
async function faultsOfAccess(page) {
  await page.evaluate(axe);
  const { violations } = await page.evaluate((rules) => window.axe.run({ runOnly: rules }), rules);
  return violations.flatMap(({ id, nodes }) => nodes.slice(0, 5).map((node) => `${id}: ${node.target}: ${node.failureSummary}`));
}

/** Parts of a page wider than its window. */
function wideParts() {
  const { scrollWidth, clientWidth } = document.documentElement;
  if (scrollWidth <= clientWidth) return [];
  return [`${scrollWidth} of ${clientWidth} pixels`, ...[...document.body.querySelectorAll('*')]
    .filter((part) => part.getBoundingClientRect().right > clientWidth + 1 && !part.closest('.scroll'))
    .map((part) => `${part.localName}.${part.className}: ${part.textContent.slice(0, 40)}`)];
}

/** Elements and attributes in use: hostile texts must not add to them. */
function markup() {
  const found = new Set();
  for (const element of document.querySelectorAll('*')) {
    found.add(element.localName);
    for (const { name } of element.attributes) found.add(`${element.localName} ${name}`);
  }
  return [...found].sort();
}

/** Where Tab leads from the top of the page to its end, and what of that is not as it should be. */
async function walkByTab(page) {
  await page.evaluate(() => {
    const focusable = 'a[href], button, input, select, summary, [tabindex="0"]';
    window.stops = [...document.querySelectorAll(focusable)].filter((each) => each.checkVisibility());
  });
  const faults = [];
  const count = await page.evaluate(() => window.stops.length);
  for (let i = 0; i < count; ++i) {
    await page.keyboard.press('Tab');
    faults.push(...await page.evaluate((index) => {
      const [wanted, found] = [window.stops[index], document.activeElement];
      const name = `stop ${index}, ${found.localName} ${found.getAttribute('aria-label') ?? found.textContent.slice(0, 40)}`;
      if (wanted !== found) return [`${name}: instead of ${wanted.outerHTML.slice(0, 100)}`];
      const { outlineStyle, outlineWidth, outlineColor } = getComputedStyle(found);
      const box = found.getBoundingClientRect();
      const [x, y] = [Math.max(0, box.left) + 5, (Math.max(0, box.top) + Math.min(innerHeight, box.bottom)) / 2];
      const top = document.elementFromPoint(x, y);
      return [
        (outlineStyle === 'none' || parseFloat(outlineWidth) < 2) && `${name}: no outline`,
        !(top && (found.contains(top) || top.contains(found))) && `${name}: hidden by ${top?.outerHTML.slice(0, 100)}`,
      ].filter(Boolean);
    }, i));
    if (faults.length > 5) break;
  }
  return faults;
}

for (const name of names) {
  describe(`report of ${name}`, () => {
    for (const look of looks) {
      test(`${look.scheme}, ${look.width} px: drawn, readable`, () => visit(name, look, async (page) => {
        assert.deepEqual(await page.evaluate(blankCharts), []);
        await openTables(page);
        assert.deepEqual(await faultsOfAccess(page), []);
      }));
    }

    test('360 px: nothing to scroll sideways', () => visit(name, { width: 360 }, async (page) => {
      await openTables(page);
      assert.deepEqual(await page.evaluate(wideParts), []);
    }));

    test('the policy allows the blocks in the page and nothing else', () => visit(name, {}, async (page) => {
      const policy = await page.getAttribute('meta[http-equiv="Content-Security-Policy"]', 'content');
      const blocks = await page.evaluate(() =>
        [...document.querySelectorAll('script:not([type="application/json"]), style')].map((block) => [block.localName, block.textContent]));
      const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
      const sources = (kind) => [`${kind}-src`, ...blocks.filter(([tag]) => tag === kind).map(([, text]) => hash(text))].join(' ');
      const wanted = ["default-src 'none'", sources('script'), sources('style'), "base-uri 'none'", "form-action 'none'"];
      assert.deepEqual(policy.split('; ').sort(), wanted.sort());
    }));

    test('without script a text says what is missing', () => visit(name, { javaScriptEnabled: false }, async (page) => {
      assert.match(await page.innerText('body'), /JavaScript|script/);
    }));
  });
}
