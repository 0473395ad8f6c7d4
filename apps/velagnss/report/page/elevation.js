// C/N0 by elevation: a panel for each system, a line for each of its signals, whiskers from the least to the greatest
// value.
const Elevation = (() => {
  'use strict';

  const kWidth = 340;
  const kHeight = 200;
  const kArea = { left: 30, right: 262, top: 10, bottom: 172 };
  const kDashes = [[], [6, 3], [2, 2], [8, 3, 2, 3], [12, 4], [4, 4]];
  const kMarkers = ['circle', 'square', 'triangle', 'diamond', 'inverted', 'cross'];
  const kLabelHeight = 13;

  const x = (elevation) => kArea.left + ((kArea.right - kArea.left) * elevation) / 90;
  const middle = ({ from_deg: from, to_deg: to }) => (from + to) / 2;

  function scale(signals) {
    const bands = signals.flatMap((signal) => signal.bands);
    const low = Math.floor(Math.min(...bands.map(({ min }) => min)) / 5) * 5;
    const high = Math.max(low + 5, Math.ceil(Math.max(...bands.map(({ max }) => max)) / 5) * 5);
    const y = (value) => kArea.bottom - ((kArea.bottom - kArea.top) * (value - low)) / (high - low);
    return { y, ticks: Svg.ticks(low, high, 5) };
  }

  function axes({ y, ticks }) {
    return [
      ...ticks.flatMap((value) => [
        Dom.svg('path', { class: 'grid', d: `M${kArea.left},${y(value)}H${kArea.right}` }),
        Dom.svg(
          'text',
          { class: 'axis', x: kArea.left - 5, y: y(value) + 4, 'text-anchor': 'end' },
          Format.number(value),
        ),
      ]),
      ...[0, 30, 60, 90].flatMap((value) => [
        Dom.svg('path', { class: 'grid', d: `M${x(value)},${kArea.top}V${kArea.bottom}` }),
        Dom.svg(
          'text',
          { class: 'axis', x: x(value), y: kArea.bottom + 15, 'text-anchor': 'middle' },
          `${value}\u00b0`,
        ),
      ]),
    ];
  }

  // Labels at the ends of the lines, moved apart where they would overlap.
  function labelHeights(ends) {
    const order = ends.map((y, i) => ({ y, i })).sort((a, b) => a.y - b.y);
    order.forEach((row, i) => (row.y = i ? Math.max(row.y, order[i - 1].y + kLabelHeight) : row.y));
    const heights = [];
    order.forEach(({ y, i }) => (heights[i] = y));
    return heights;
  }

  function drawSignal(signal, rank, count, { y }, labelY) {
    const shift = (rank - (count - 1) / 2) * 4;
    const at = (band) => x(middle(band)) + shift;
    const points = signal.bands.map((band) => [at(band), y(band.mean)]);
    const [endX, endY] = points[points.length - 1];
    return Dom.svg(
      'g',
      {},
      signal.bands.map((band) =>
        Dom.svg('path', { class: 'whisker', d: `M${at(band)},${y(band.min)}V${y(band.max)}` }),
      ),
      Dom.svg('path', {
        class: 'line',
        d: Svg.path(points),
        'stroke-dasharray': kDashes[rank % kDashes.length].join(' '),
      }),
      points.map(([px, py], i) =>
        Svg.marker(kMarkers[rank % kMarkers.length], px, py, 3, {
          class: 'mark',
          'data-point': `${signal.signal}/${i}`,
        }),
      ),
      Dom.svg('path', { class: 'leader', d: `M${endX + 5},${endY}L${kArea.right + 4},${labelY}` }),
      Dom.svg('text', { class: 'label', x: kArea.right + 7, y: labelY + 4 }, signal.signal),
    );
  }

  function panel(system, signals, shared) {
    const { key, name } = Data.system(system);
    const heights = labelHeights(signals.map(({ bands }) => shared.y(bands[bands.length - 1].mean)));
    return Dom.svg(
      'svg',
      { class: `panel c-${key}`, viewBox: `0 0 ${kWidth} ${kHeight}`, 'aria-hidden': true },
      axes(shared),
      Dom.svg('text', { class: 'heading', x: kArea.left + 6, y: kArea.top + 14 }, name),
      signals.map((signal, rank) => drawSignal(signal, rank, signals.length, shared, heights[rank])),
    );
  }

  // The points of all panels, one after the other.
  class Controller {
    constructor(signals, plot) {
      this.points = signals.flatMap((signal) => signal.bands.map((band) => ({ signal, band })));
      this.marks = plot.querySelectorAll('[data-point]');
      this.index = null;
    }
    select(index) {
      this.index = index;
      this.marks.forEach((mark, i) => mark.classList.toggle('chosen', i === index));
      const text = index === null ? '' : describe(this.points[index]);
      this.show(text);
      return text;
    }
    move(step) {
      const start = this.index ?? (step > 0 ? -1 : this.points.length);
      return this.select(Math.min(this.points.length - 1, Math.max(0, start + step)));
    }
    edge(side) {
      return this.select(side < 0 ? 0 : this.points.length - 1);
    }
    clear() {
      this.select(null);
    }
  }

  function describe({ signal, band }) {
    return (
      `${Data.system(signal.system).name} ${signal.signal}, ${band.from_deg} to ${band.to_deg}\u00b0: mean ${Format.number(band.mean, 1)} dB-Hz, ` +
      `${Format.number(band.min)} to ${Format.number(band.max)}, ${Format.plural(band.count, 'value')}`
    );
  }

  function table(signals) {
    return Table.make({
      name: 'elevation',
      caption: 'C/N0 by elevation, dB-Hz',
      columns: [
        'System',
        'Signal',
        'Elevation',
        ...['Values', 'Least', 'Mean', 'Greatest'].map((text) => ({ text, number: true })),
      ],
      rows: signals.flatMap(({ system, signal, bands }) =>
        bands.map((band) => [
          Data.system(system).name,
          signal,
          `${band.from_deg} to ${band.to_deg}\u00b0`,
          Table.numeric(band.count),
          Table.numeric(band.min),
          Table.numeric(band.mean, 1),
          Table.numeric(band.max),
        ]),
      ),
    });
  }

  // `all`: the signals with their bands, at least one of them with a value.
  function chart(all) {
    const signals = all.filter(({ bands }) => bands.length > 0).sort((a, b) => Data.systemOrder(a.system, b.system));
    const shared = scale(signals);
    const systems = [...new Set(signals.map(({ system }) => system))];
    const panels = systems.map((system) =>
      panel(
        system,
        signals.filter((signal) => signal.system === system),
        shared,
      ),
    );
    const plot = Figure.plot(
      'panels',
      `C/N0 by elevation of ${Format.plural(signals.length, 'signal')}. Arrow keys go from point to point.`,
      panels,
    );
    plot
      .querySelectorAll('[data-point]')
      .forEach((mark, i) => mark.addEventListener('pointerenter', () => controller.select(i)));
    const controller = new Controller(signals, plot);
    const { figure, show } = Figure.make({
      name: 'elevation',
      title: 'C/N0 by elevation',
      titled: true,
      note: 'dB-Hz; mean, with least and greatest value',
      plot,
      controller,
      table: () => table(signals),
    });
    controller.show = show;
    return figure;
  }

  return { chart };
})();
