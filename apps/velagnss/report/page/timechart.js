// A chart over time, drawn by dygraphs: axes, grid and the scale are its part; what is painted between the axes, the
// cursor and zooming are ours. All charts of an input show the same span of time and the same cursor.
const TimeChart = (() => {
  'use strict';

  // The legend and the labels of dygraphs write markup with styles, which the policy of the page forbids.
  Dygraph.PLUGINS = [Dygraph.Plugins.Axes, Dygraph.Plugins.Grid];

  const kLeastBins = 4; // that a zoomed chart shows
  const kSecondsSpan = 120000; // of a chart, ms
  const kTickHeight = 36;
  const kTickWidth = 60;
  const kPrintRatio = 3; // dots of the printed image for a pixel
  const kLeastDrag = 6; // pixels; below, it was a click

  class Group {
    constructor(grid) {
      this.grid = grid;
      this.charts = [];
      this.cursor = null;
      this.window = this.whole;
    }
    // Few bins are in the middle of a chart that has room for more.
    get whole() {
      const { start, end, step } = this.grid;
      const margin = Math.max(0, kLeastBins * step - (end - start)) / 2;
      return [start - margin, end + margin];
    }
    setWindow(from, to) {
      const [start, end] = this.whole;
      const span = Math.min(end - start, Math.max(to - from, kLeastBins * this.grid.step));
      const begin = Math.min(Math.max(start, from), end - span);
      this.window = [begin, begin + span];
      this.charts.forEach((chart) => chart.update());
    }
    // Around the cursor, which stays where it is on the screen.
    zoom(factor) {
      const [from, to] = this.window;
      const center = this.cursor === null ? (from + to) / 2 : this.grid.time(this.cursor);
      this.setWindow(center - (center - from) / factor, center + (to - center) / factor);
    }
    setCursor(bin) {
      this.cursor = bin;
      if (bin !== null) this.reveal(this.grid.time(bin));
      this.charts.forEach((chart) => chart.showCursor());
    }
    reveal(time) {
      const [from, to] = this.window;
      if (time < from || time > to) this.setWindow(time - (to - from) / 2, time + (to - from) / 2);
    }
  }

  // Seconds are shown where ticks are close, and where a tick has some.
  function timeLabel(time, grid, [from, to]) {
    const milliseconds = Number(time);
    if (milliseconds % 1000 !== 0) return '';
    if (grid.hasDate && milliseconds % 86400000 === 0) return Format.day(milliseconds);
    return Format.clock(milliseconds, milliseconds % 60000 !== 0 || to - from < kSecondsSpan);
  }

  // The labels of axes are the one place where dygraphs takes a text for markup.
  const asMarkup = (text) => text.replace(/[&<>]/g, (character) => `&#${character.charCodeAt()};`);

  // Bins with values that belong together: [[first, last], ...]. Longer distances than `reach` are gaps.
  function runs(values, reach) {
    const found = [];
    values.forEach((value, bin) => {
      if (value === null) return;
      const last = found[found.length - 1];
      if (last && bin - last[1] <= reach) last[1] = bin;
      else found.push([bin, bin]);
    });
    return found;
  }

  // A content decides what is shown. It has
  //   name, title, note, label, controls, legend, table: as in Figure
  //   series: [{ label, values }], what dygraphs knows of the data
  //   range(firstBin, lastBin): lowest and highest value
  //   ticks(low, high, count): [{ v, label }]
  //   labelWidth: pixels left of the chart
  //   paint(context, chart): draws the series
  //   read(bin, y): what the cursor shows; y in values, null for the keyboard
  //   choose(step): another series, optional
  class Chart {
    constructor(group, content) {
      this.group = group;
      this.content = content;
      this.canvas = Dom.make('div', { class: 'canvas' });
      this.mark = Dom.make('div', { class: 'cursor', hidden: true });
      this.selection = Dom.make('div', { class: 'selection', hidden: true });
      this.plot = Figure.plot(`time ${content.size ?? ''}`, content.label, this.canvas, this.mark, this.selection);
      Object.assign(this, Figure.make({ ...content, plot: this.plot, controller: this }));
      group.charts.push(this);
      this.followPointer();
      Theme.onChange(() => this.redraw());
    }

    // Once the figure is on the page: dygraphs needs its size.
    draw() {
      this.graph = new Dygraph(this.canvas, this.rows(), {
        ...this.options(),
        labelsUTC: true,
        interactionModel: {},
        drawHighlightPointCallback: () => {},
        rightGap: 8,
        xRangePad: 0,
        plotter: (event) => this.paint(event),
        pixelRatio: Theme.isPrinting() ? kPrintRatio : null,
      });
      if (Theme.isPrinting()) this.fixForPrint();
    }

    // dygraphs calls it for each series, the first time within its constructor; a content paints all of them at once.
    paint({ dygraph, seriesIndex, drawingContext }) {
      this.graph = dygraph;
      if (seriesIndex === 0) this.content.paint(drawingContext, this);
    }

    rows() {
      const { grid } = this.group;
      return Array.from({ length: grid.count }, (_, bin) => [
        grid.time(bin),
        ...this.content.series.map(({ values }) => values[bin]),
      ]);
    }

    options() {
      const { grid, window } = this.group;
      const axis = { axisLabelFontSize: 12, gridLineColor: Theme.color('grid'), axisLineColor: Theme.color('rule') };
      return {
        labels: ['time', ...this.content.series.map(({ label }) => label)],
        dateWindow: window,
        valueRange: this.content.range(grid.bin(window[0]), grid.bin(window[1])),
        axes: {
          x: {
            ...axis,
            pixelsPerLabel: kTickWidth,
            ticker: Dygraph.dateTicker,
            axisLabelFormatter: (time) => timeLabel(time, grid, window),
          },
          y: {
            ...axis,
            axisLabelWidth: this.content.labelWidth,
            ticker: (low, high, pixels) =>
              this.content
                .ticks(low, high, Math.max(2, Math.round(pixels / kTickHeight)))
                .map(({ v, label }) => ({ v, label: asMarkup(label) })),
          },
        },
      };
    }

    update() {
      this.graph?.updateOptions(this.options());
      this.showCursor();
    }

    // Anew: with other series, in other colors or in another size.
    redraw() {
      this.graph?.destroy();
      this.draw();
      this.showCursor();
    }

    // What dygraphs draws just before printing does not reach the paper in Chromium; a copy of the image does.
    fixForPrint() {
      for (const canvas of this.canvas.querySelectorAll('canvas')) {
        const copy = Dom.make('canvas', { width: canvas.width, height: canvas.height });
        copy.getContext('2d').drawImage(canvas, 0, 0);
        for (const property of ['position', 'left', 'top', 'width', 'height'])
          copy.style[property] = canvas.style[property];
        canvas.replaceWith(copy);
      }
    }

    x(bin) {
      return this.graph.toDomXCoord(this.group.grid.time(bin));
    }
    y(value) {
      return this.graph.toDomYCoord(value);
    }

    showCursor(y = null) {
      const bin = this.group.cursor;
      this.mark.hidden = bin === null || !this.graph;
      if (this.mark.hidden) return this.show('');
      const area = this.graph.getArea();
      Object.assign(this.mark.style, { left: `${this.x(bin)}px`, top: `${area.y}px`, height: `${area.h}px` });
      return this.show(this.text(bin, y));
    }
    text(bin, y = null) {
      return `${this.group.grid.span(bin)}: ${this.content.read(bin, y)}`;
    }

    // The controller of Figure.
    hasValue(bin) {
      return this.content.series.some(({ values }) => values[bin] !== null);
    }
    moveTo(start, direction, count) {
      const { grid } = this.group;
      let found = null;
      for (let bin = start; bin >= 0 && bin < grid.count && count > 0; bin += direction) {
        if (!this.hasValue(bin)) continue;
        found = bin;
        count -= 1;
      }
      if (found === null) return undefined;
      this.group.setCursor(found);
      return this.text(found);
    }
    move(steps) {
      const direction = Math.sign(steps);
      const { cursor, window, grid } = this.group;
      const start = cursor === null ? grid.bin(window[direction > 0 ? 0 : 1]) : cursor + direction;
      return this.moveTo(start, direction, Math.abs(steps));
    }
    edge(side) {
      return this.moveTo(side < 0 ? 0 : this.group.grid.count - 1, -side, 1);
    }
    choose(step) {
      const chosen = this.content.choose?.(step, this);
      return chosen && (this.group.cursor === null ? chosen : this.text(this.group.cursor));
    }
    zoom(factor) {
      this.group.zoom(factor);
      return this.windowText();
    }
    reset() {
      this.group.setWindow(...this.group.whole);
      return this.windowText();
    }
    clear() {
      this.content.setChosen?.(null, this);
      this.group.setCursor(null);
    }
    windowText() {
      const { grid, window } = this.group;
      return `${grid.text(grid.bin(window[0]))} to ${grid.text(grid.bin(window[1]))}`;
    }

    pointer(event) {
      const box = this.plot.getBoundingClientRect();
      const area = this.graph.getArea();
      const x = Math.min(Math.max(event.clientX - box.left, area.x), area.x + area.w);
      return {
        x,
        bin: this.group.grid.bin(this.graph.toDataXCoord(x)),
        y: this.graph.toDataYCoord(event.clientY - box.top),
      };
    }

    followPointer() {
      let from = null;
      this.plot.addEventListener('pointerdown', (event) => {
        if (event.pointerType !== 'mouse' || event.button !== 0 || !this.graph) return;
        from = this.pointer(event);
        this.plot.setPointerCapture(event.pointerId);
      });
      this.plot.addEventListener('pointermove', (event) => {
        if (!this.graph) return;
        const at = this.pointer(event);
        this.group.setCursor(at.bin);
        this.showCursor(at.y);
        if (from) this.select(from.x, at.x);
      });
      this.plot.addEventListener('pointerup', (event) => {
        if (from) this.zoomTo(from, this.pointer(event));
        from = null;
      });
      this.plot.addEventListener('pointerleave', () => this.group.setCursor(null));
      this.plot.addEventListener('dblclick', () => this.reset());
    }
    select(from, to) {
      const area = this.graph.getArea();
      this.selection.hidden = false;
      Object.assign(this.selection.style, {
        left: `${Math.min(from, to)}px`,
        width: `${Math.abs(to - from)}px`,
        top: `${area.y}px`,
        height: `${area.h}px`,
      });
    }
    zoomTo(from, to) {
      this.selection.hidden = true;
      if (Math.abs(to.x - from.x) < kLeastDrag) return;
      const times = [from.x, to.x].sort((a, b) => a - b).map((x) => this.graph.toDataXCoord(x));
      this.group.setWindow(...times);
    }
  }

  return { Group, Chart, runs };
})();
