// Positions in a plane, east to the right and north up, in meters: a track, or points with circles around a center.
const Plane = (() => {
  'use strict';

  const kSize = 400;
  const kArea = { left: 46, top: 8, size: 340 };
  const kMargin = 1.12;
  const kAxes = 'meters east (right) and north (up)';
  const kLeastHalf = 0.005; // meters from the middle to the edge
  const kBarShare = 0.3; // of the width that the scale bar may have
  const kManyPoints = 500; // need a thinner line
  const kZoomLimit = 4096;

  // What must be in the picture: points and circles.
  function wholeView(points, circles) {
    const radius = Math.max(0, ...circles.map(({ radius: one }) => one));
    let [west, east, south, north] = circles.length
      ? [-radius, radius, -radius, radius]
      : [Infinity, -Infinity, Infinity, -Infinity];
    for (const { east: e, north: n } of points) {
      [west, east, south, north] = [Math.min(west, e), Math.max(east, e), Math.min(south, n), Math.max(north, n)];
    }
    const half = Math.max(kLeastHalf, (kMargin * Math.max(east - west, north - south)) / 2);
    return { east: (west + east) / 2, north: (south + north) / 2, half };
  }

  // Labeled lines at round values; `place` says where the line and its label are.
  function gridLines(middle, half, place) {
    const values = Svg.ticks(middle - half, middle + half, 6);
    const digits = Math.max(0, -Math.floor(Math.log10(values[1] - values[0]) + 1e-9));
    return values.map((value) => {
      const { d, label } = place(value);
      const text = Dom.svg('text', { class: 'axis', ...label }, Format.number(value, digits));
      return [Dom.svg('path', { class: 'grid', d }), text];
    });
  }

  class Drawing {
    // content: { points: [{ east, north, bin? }], isTrack, circles: [{ radius, text }], center, describe(point, index) }
    constructor(content) {
      this.content = content;
      this.whole = wholeView(content.points, content.circles);
      this.view = this.whole;
      this.index = null;
      this.svg = Dom.svg('svg', { viewBox: `0 0 ${kSize} ${kSize}`, 'aria-hidden': true });
      this.draw();
    }

    x(east) {
      return kArea.left + kArea.size * (0.5 + (east - this.view.east) / (2 * this.view.half));
    }
    y(north) {
      return kArea.top + kArea.size * (0.5 - (north - this.view.north) / (2 * this.view.half));
    }

    draw() {
      // Within the frame; an inner svg cuts what is outside.
      const inner = Dom.svg(
        'svg',
        {
          x: kArea.left,
          y: kArea.top,
          width: kArea.size,
          height: kArea.size,
          viewBox: `${kArea.left} ${kArea.top} ${kArea.size} ${kArea.size}`,
        },
        this.content.isTrack ? this.track() : this.dots(),
        this.circles(),
        this.center(),
        this.cursor(),
      );
      Dom.replace(this.svg, this.grid(), inner, this.scaleBar(), this.north());
    }

    grid() {
      const { east, north, half } = this.view;
      const far = kArea.left + kArea.size;
      const low = kArea.top + kArea.size;
      return [
        Dom.svg('rect', { class: 'frame', x: kArea.left, y: kArea.top, width: kArea.size, height: kArea.size }),
        gridLines(east, half, (value) => {
          const x = Svg.round(this.x(value));
          return { d: `M${x},${kArea.top}V${low}`, label: { x, y: low + 16, 'text-anchor': 'middle' } };
        }),
        gridLines(north, half, (value) => {
          const y = Svg.round(this.y(value));
          return { d: `M${kArea.left},${y}H${far}`, label: { x: kArea.left - 5, y: y + 4, 'text-anchor': 'end' } };
        }),
        Dom.svg('text', { class: 'axis', x: far, y: low + 31, 'text-anchor': 'end' }, kAxes),
      ];
    }

    track() {
      const { points } = this.content;
      const place = (point) => [this.x(point.east), this.y(point.north)];
      const ends = [
        ['start', points[0], 'circle', 13],
        ['end', points[points.length - 1], 'square', -7],
      ];
      return [
        ...this.content.pieces.map((piece) =>
          Dom.svg('path', {
            class: this.content.points.length > kManyPoints ? 'line track dense' : 'line track',
            d: piece.length > 1 ? Svg.path(piece.map(place)) : `${Svg.path(piece.map(place))}h0`,
          }),
        ),
        ...ends.flatMap(([name, point, shape, below]) => [
          Svg.marker(shape, ...place(point), 4, { class: 'mark' }),
          this.endLabel(name, ...place(point), below),
        ]),
      ];
    }

    // To the left of its point where it would leave the frame.
    endLabel(name, x, y, below) {
      const left = x > kArea.left + 0.9 * kArea.size;
      return Dom.svg(
        'text',
        { class: 'label halo', x: left ? x - 6 : x + 6, y: y + below, 'text-anchor': left && 'end' },
        name,
      );
    }

    dots() {
      const d = this.content.points
        .map(({ east, north }) => `M${Svg.round(this.x(east))},${Svg.round(this.y(north))}h0`)
        .join('');
      return [Dom.svg('path', { class: 'dots', d })];
    }

    circles() {
      const scale = kArea.size / (2 * this.view.half);
      return this.content.circles.flatMap(({ radius, text }, i) => [
        Dom.svg('circle', {
          class: 'limit',
          cx: this.x(0),
          cy: this.y(0),
          r: radius * scale,
          'stroke-dasharray': i ? '7 4' : null,
        }),
        Dom.svg('text', { class: 'label halo', x: this.x(0), y: this.y(radius) - 4, 'text-anchor': 'middle' }, text),
      ]);
    }

    center() {
      const [x, y] = [this.x(0), this.y(0)];
      return [
        Svg.marker('plus', x, y, 7, { class: 'center' }),
        Dom.svg('text', { class: 'label halo', x: x + 9, y: y - 5 }, this.content.center),
      ];
    }

    cursor() {
      if (this.index === null) return [];
      const { east, north } = this.content.points[this.index];
      return [Dom.svg('circle', { class: 'cursor-ring', cx: this.x(east), cy: this.y(north), r: 7 })];
    }

    scaleBar() {
      const meters = Svg.roundStep(2 * this.view.half * kBarShare);
      const width = (kArea.size * meters) / (2 * this.view.half);
      const [x, y] = [kArea.left + 12, kArea.top + kArea.size - 14];
      return Dom.svg(
        'g',
        { class: 'scale-bar' },
        Dom.svg('path', { class: 'bar', d: `M${x},${y - 5}V${y}H${x + width}V${y - 5}` }),
        Dom.svg(
          'text',
          { class: 'label halo', x: x + width / 2, y: y - 6, 'text-anchor': 'middle' },
          Format.length(meters),
        ),
      );
    }

    north() {
      const [x, y] = [kArea.left + kArea.size - 18, kArea.top + 16];
      return Dom.svg(
        'g',
        { class: 'north' },
        Dom.svg('path', { class: 'bar', d: `M${x},${y + 16}V${y}M${x - 4},${y + 6}L${x},${y}L${x + 4},${y + 6}` }),
        Dom.svg('text', { class: 'label halo', x, y: y + 29, 'text-anchor': 'middle' }, 'N'),
      );
    }

    // The controller of Figure.
    select(index) {
      this.index = index;
      if (index !== null) this.reveal(this.content.points[index]);
      this.draw();
      const text = index === null ? '' : this.content.describe(this.content.points[index], index);
      this.show(text);
      return text;
    }
    reveal({ east, north }) {
      const { view } = this;
      if (Math.abs(east - view.east) > view.half || Math.abs(north - view.north) > view.half)
        this.view = { ...view, east, north };
    }
    move(step) {
      const count = this.content.points.length;
      const start = this.index ?? (step > 0 ? -1 : count);
      return this.select(Math.min(count - 1, Math.max(0, start + step)));
    }
    edge(side) {
      return this.select(side < 0 ? 0 : this.content.points.length - 1);
    }
    clear() {
      this.select(null);
    }
    zoom(factor) {
      const { east, north } = this.index === null ? this.view : this.content.points[this.index];
      const half = Math.min(this.whole.half, Math.max(this.whole.half / kZoomLimit, this.view.half / factor));
      this.view = half === this.whole.half ? this.whole : { east, north, half };
      this.draw();
      return `${Format.length(2 * half)} from edge to edge`;
    }
    reset() {
      this.view = this.whole;
      this.draw();
      return 'everything is shown';
    }
    nearest(event) {
      const at = new DOMPoint(event.clientX, event.clientY).matrixTransform(this.svg.getScreenCTM().inverse());
      let best = [20, null];
      this.content.points.forEach((point, i) => {
        const distance = Math.hypot(this.x(point.east) - at.x, this.y(point.north) - at.y);
        if (distance < best[0]) best = [distance, i];
      });
      return best[1];
    }
  }

  function chart(content, { label, ...frame }) {
    const drawing = new Drawing(content);
    const plot = Figure.plot('square', label, drawing.svg);
    plot.addEventListener('pointermove', (event) => drawing.select(drawing.nearest(event)));
    plot.addEventListener('pointerleave', () => drawing.clear());
    const { figure, show } = Figure.make({ ...frame, plot, controller: drawing });
    drawing.show = show;
    return figure;
  }

  const offset = ({ east, north }) => `${Format.number(east, 3)} m east, ${Format.number(north, 3)} m north`;

  // The data say where a new piece begins.
  function pieces(points) {
    const found = [];
    points.forEach((point) => {
      if (found.length === 0 || point.begins) found.push([]);
      found[found.length - 1].push(point);
    });
    return found;
  }

  function pointTable(name, caption, points, first, heading) {
    return Table.make({
      name,
      caption,
      columns: [first, { text: 'East, m', number: true }, { text: 'North, m', number: true }],
      rows: points.map((point, i) => [heading(point, i), Table.numeric(point.east, 3), Table.numeric(point.north, 3)]),
    });
  }

  function track(position, grid) {
    const points = position.track.map(([bin, east, north, begins]) => ({ bin, east, north, begins }));
    const name = ({ bin }, i) => (grid && bin !== null ? grid.text(bin) : `Point ${i + 1}`);
    const content = {
      points,
      pieces: pieces(points),
      isTrack: true,
      circles: [],
      center: 'mean',
      describe: (point, i) => `${name(point, i)}: ${offset(point)} of the mean`,
    };
    return chart(content, {
      name: 'track',
      title: 'Track',
      titled: true,
      note: 'around the mean position',
      label: `Track of ${Format.plural(points.length, 'point')} on a map without background.`,
      table: () => pointTable('track', 'Track, around the mean position', points, grid ? 'Time (UTC)' : 'Point', name),
    });
  }

  // Points around a center with the circles that hold 50 and 95 % of all.
  function scatter(list, [half, most], { name, title, note, center }) {
    const points = list.map(([east, north]) => ({ east, north }));
    const circles = [
      [half, '50 %'],
      [most, '95 %'],
    ]
      .filter(([radius]) => Format.isNumber(radius) && radius > 0)
      .map(([radius, text]) => ({ radius, text: `${text}: ${Format.length(radius)}` }));
    const content = {
      points,
      isTrack: false,
      circles,
      center,
      describe: (point, i) => `Point ${i + 1} of ${points.length}: ${offset(point)} of the ${center}`,
    };
    return chart(content, {
      name,
      title,
      note,
      label: `${title}: ${Format.plural(points.length, 'point')}. ${circles.map(({ text }) => text).join(', ')}.`,
      table: () => pointTable(name, title, points, 'Point', (point, i) => String(i + 1)),
    });
  }

  return { track, scatter };
})();
