// What drawings in SVG have in common: markers, paths, round numbers.
const Svg = (() => {
  'use strict';

  // Outlines of markers in a circle of radius 1.
  const kMarkers = {
    circle: 'M-1,0a1,1 0 1,0 2,0a1,1 0 1,0 -2,0z',
    square: 'M-.85,-.85h1.7v1.7h-1.7z',
    triangle: 'M0,-1.1L1,.75H-1z',
    inverted: 'M0,1.1L1,-.75H-1z',
    diamond: 'M0,-1.2L1.2,0L0,1.2L-1.2,0z',
    cross: 'M-.8,-.8L.8,.8M-.8,.8L.8,-.8',
    plus: 'M-1.1,0H1.1M0,-1.1V1.1',
  };

  function marker(name, x, y, radius, attributes = {}) {
    return Dom.svg('path', {
      d: kMarkers[name],
      transform: `translate(${round(x)} ${round(y)}) scale(${radius})`,
      'vector-effect': 'non-scaling-stroke',
      ...attributes,
    });
  }

  const round = (value) => Math.round(value * 100) / 100;
  const path = (points) => points.map(([x, y], i) => `${i ? 'L' : 'M'}${round(x)},${round(y)}`).join('');

  // The largest of 1, 2, 5 times a power of ten that does not exceed `limit`.
  function roundStep(limit) {
    const power = 10 ** Math.floor(Math.log10(limit));
    return [5, 2, 1].find((factor) => factor * power <= limit * (1 + 1e-9)) * power;
  }

  // Multiples of a round step in [from, to], about `count` of them.
  function ticks(from, to, count) {
    const step = roundStep((to - from) / Math.max(1, count - 1));
    const first = Math.ceil(from / step - 1e-9);
    const last = Math.floor(to / step + 1e-9);
    return Array.from({ length: Math.max(0, last - first + 1) }, (_, i) => (first + i) * step);
  }

  // A short line in the style of a series, for legends.
  function swatch({ color, dash = [], marker: shape, width = 2, hollow }) {
    return Dom.svg(
      'svg',
      { class: `swatch c-${color}`, viewBox: '0 0 32 12', 'aria-hidden': true },
      Dom.svg('path', { class: 'line', d: 'M1,6H31', 'stroke-dasharray': dash.join(' '), 'stroke-width': width }),
      shape && marker(shape, 16, 6, 4, { class: hollow ? 'mark hollow' : 'mark' }),
    );
  }

  // [{ style, text }] as a list with swatches.
  function legend(entries) {
    return Dom.make(
      'ul',
      { class: 'legend' },
      entries.map(({ style, text }) => Dom.make('li', {}, swatch(style), text)),
    );
  }

  return { marker, path, round, roundStep, ticks, legend };
})();
