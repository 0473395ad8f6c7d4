// Colors of the style sheet for canvases, and when they change: by the color scheme of the system, and for printing.
const Theme = (() => {
  'use strict';

  const kPrinting = 'printing';
  const redraws = [];

  const color = (name) => getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();

  const isPrinting = () => document.documentElement.classList.contains(kPrinting);

  // `redraw` is called whenever colors or the width of the page have changed.
  const onChange = (redraw) => redraws.push(redraw);
  const changed = () => redraws.forEach((redraw) => redraw());

  // A canvas does not follow the style sheet: for paper it is drawn again, black on white and as wide as a sheet.
  function print(on) {
    if (isPrinting() === on) return;
    document.documentElement.classList.toggle(kPrinting, on);
    changed();
  }

  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', changed);
  matchMedia('print').addEventListener('change', (event) => print(event.matches));
  addEventListener('beforeprint', () => print(true));
  addEventListener('afterprint', () => print(false));

  return { color, isPrinting, onChange };
})();
