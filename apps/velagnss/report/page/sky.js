// The sky above the antenna: north at the top, the horizon as the outer circle, the zenith in the middle.
const Sky = (() => {
  'use strict';

  const kHorizon = 100; // radius
  const kLabelSize = 6.5;
  const kMarkerRadius = 2.1;
  const kElevationLabels = 22.5; // azimuth
  const kManyPoints = 2000; // need thinner lines
  const kReach = 8; // from the pointer to a satellite
  const kRings = [0, 30, 60];
  const kDirections = [
    ['N', 0],
    ['E', 90],
    ['S', 180],
    ['W', 270],
  ];

  const position = (azimuth, elevation) => {
    const radius = kHorizon * (1 - Math.max(0, elevation) / 90);
    const angle = (azimuth * Math.PI) / 180;
    return [radius * Math.sin(angle), -radius * Math.cos(angle)];
  };
  const place = ([, azimuth, elevation]) => position(azimuth, elevation);

  function frame() {
    const rings = kRings.map((elevation) =>
      Dom.svg('circle', { class: elevation ? 'grid' : 'frame', r: kHorizon * (1 - elevation / 90) }),
    );
    const spokes = [0, 45, 90, 135].map((azimuth) => {
      const [x, y] = position(azimuth, 0);
      return Dom.svg('path', { class: 'grid', d: `M${x},${y}L${-x},${-y}` });
    });
    const names = kDirections.map(([name, azimuth]) => {
      const [x, y] = position(azimuth, 0);
      return Dom.svg('text', { class: 'axis', x: x * 1.07, y: y * 1.07 + 2.4, 'text-anchor': 'middle' }, name);
    });
    const elevations = [30, 60].map((elevation) => {
      const [x, y] = position(kElevationLabels, elevation);
      return Dom.svg('text', { class: 'axis small', x, y: y + 2, 'text-anchor': 'middle' }, `${elevation}\u00b0`);
    });
    return [...rings, ...spokes, ...names, ...elevations];
  }

  // Pieces of a track: the data say where a new one begins, and within one the satellite is used throughout, or not. A
  // piece that begins because of that begins where the one before it ends.
  function pieces(track) {
    const found = [];
    track.forEach((point, i) => {
      const joined = i > 0 && !point[4];
      const current = found[found.length - 1];
      if (joined && current.used === point[3]) current.points.push(point);
      else found.push({ used: point[3], points: joined ? [track[i - 1], point] : [point] });
    });
    return found;
  }

  // What labels must not cover: first the markers, then labels too.
  const markerBoxes = (satellites) =>
    satellites.map(({ track }) => {
      const [x, y] = place(track[track.length - 1]);
      return { left: x - kMarkerRadius, base: y + kLabelSize / 3, width: 2 * kMarkerRadius };
    });

  // Beside the marker where nothing else is yet; `boxes` collects what is taken.
  function labelPlace([x, y], text, boxes) {
    const width = text.length * kLabelSize * 0.62;
    const candidates = [
      [x + 3.5, y + 2.2],
      [x - 3.5 - width, y + 2.2],
      [x - width / 2, y - 3.5],
      [x - width / 2, y + 3.5 + kLabelSize],
    ];
    const free =
      candidates.find(([left, base]) => !boxes.some((box) => overlaps(box, left, base, width))) ?? candidates[0];
    boxes.push({ left: free[0], base: free[1], width });
    return free;
  }
  const overlaps = (box, left, base, width) =>
    left < box.left + box.width && box.left < left + width && Math.abs(base - box.base) < kLabelSize * 0.9;

  const unused = (used) => used === 0;

  function drawSatellite(satellite, boxes) {
    const { key, marker } = Data.system(satellite.system);
    const last = satellite.track[satellite.track.length - 1];
    const [x, y] = place(last);
    const [left, base] = labelPlace([x, y], satellite.name, boxes);
    return Dom.svg(
      'g',
      { class: `satellite c-${key}`, 'data-satellite': satellite.name },
      pieces(satellite.track).map(({ used, points }) =>
        Dom.svg('path', { class: `line ${unused(used) ? 'unused' : ''}`, d: Svg.path(points.map(place)) }),
      ),
      Svg.marker(marker, x, y, kMarkerRadius, { class: `mark ${unused(last[3]) ? 'hollow' : ''}` }),
      Dom.svg('text', { class: 'label halo', x: left, y: base }, satellite.name),
    );
  }

  function describe(satellite) {
    const [, azimuth, elevation] = satellite.track[satellite.track.length - 1];
    const use = satellite.used === null ? '' : `, used in ${Format.number(satellite.used)}`;
    return (
      `${satellite.name} (${Data.system(satellite.system).name}): at last azimuth ${Format.degrees(azimuth)}, elevation ${Format.degrees(elevation)}; ` +
      `seen in ${Format.plural(satellite.epochs, 'epoch')}${use}`
    );
  }

  // Its satellites one after the other, by key or pointer.
  class Controller {
    constructor(satellites, svg) {
      Object.assign(this, { satellites, svg, index: null });
    }
    select(index) {
      this.index = index;
      this.svg.classList.toggle('choosing', index !== null);
      this.svg.querySelectorAll('.satellite').forEach((group, i) => group.classList.toggle('chosen', i === index));
      const text = index === null ? '' : describe(this.satellites[index]);
      this.show(text);
      return text;
    }
    move(step) {
      const count = this.satellites.length;
      const start = this.index ?? (step > 0 ? -1 : count);
      return this.select(Math.min(count - 1, Math.max(0, start + step)));
    }
    choose(step) {
      return this.move(step);
    }
    edge(side) {
      return this.select(side < 0 ? 0 : this.satellites.length - 1);
    }
    clear() {
      this.select(null);
    }
    nearest(x, y) {
      let best = [kReach, null];
      this.satellites.forEach(({ track }, i) =>
        track.forEach((point) => {
          const [px, py] = place(point);
          const distance = Math.hypot(px - x, py - y);
          if (distance < best[0]) best = [distance, i];
        }),
      );
      return best[1];
    }
  }

  function followPointer(svg, controller) {
    svg.addEventListener('pointermove', (event) => {
      const at = new DOMPoint(event.clientX, event.clientY).matrixTransform(svg.getScreenCTM().inverse());
      controller.select(controller.nearest(at.x, at.y));
    });
    svg.addEventListener('pointerleave', () => controller.clear());
  }

  function table(satellites) {
    const highest = (track) => Math.max(...track.map(([, , elevation]) => elevation));
    return Table.make({
      name: 'sky',
      caption: 'Satellites',
      columns: [
        'Satellite',
        'System',
        ...[
          'Epochs',
          'Used',
          'Azimuth at first',
          'Elevation at first',
          'Azimuth at last',
          'Elevation at last',
          'Highest elevation',
        ].map((text) => ({ text, number: true })),
      ],
      rows: satellites.map(({ name, system, epochs, used, track }) => {
        const ends = track.length ? [track[0], track[track.length - 1]] : [];
        return [
          name,
          Data.system(system).name,
          Table.numeric(epochs),
          Table.numeric(used),
          ...[0, 1].flatMap((end) => [1, 2].map((part) => angle(ends[end]?.[part]))),
          angle(track.length ? highest(track) : null),
        ];
      }),
    });
  }
  const angle = (value) => Table.cell(value, Format.degrees(value));

  function legend(satellites) {
    const present = Data.kSystems.filter(({ key }) => satellites.some(({ system }) => system.toLowerCase() === key));
    const entries = present.map(({ key, name, marker }) => ({ style: { color: key, marker }, text: name }));
    const known = satellites.some(({ used }) => used !== null);
    return Svg.legend([
      ...entries,
      ...(known
        ? [
            { style: { color: 'ink', width: 2.5, marker: 'circle' }, text: 'used' },
            { style: { color: 'ink', dash: [1, 3], width: 1.5, marker: 'circle', hollow: true }, text: 'only tracked' },
          ]
        : []),
    ]);
  }

  // `satellites` in any order, at least one of them with a track.
  function chart(all) {
    const listed = all.slice().sort(Data.bySystem);
    const satellites = listed.filter(({ track }) => track.length > 0);
    const boxes = markerBoxes(satellites);
    const points = satellites.reduce((sum, { track }) => sum + track.length, 0);
    const svg = Dom.svg(
      'svg',
      { viewBox: '-116 -112 232 224', class: points > kManyPoints && 'dense', 'aria-hidden': true },
      frame(),
      satellites.map((satellite) => drawSatellite(satellite, boxes)),
    );
    const controller = new Controller(satellites, svg);
    const note = `${Format.plural(satellites.length, 'satellite')}; the marker is at the last position`;
    const { figure, show } = Figure.make({
      name: 'sky',
      title: 'Sky plot',
      titled: true,
      note,
      legend: legend(satellites),
      controller,
      table: () => table(listed),
      plot: Figure.plot(
        'square',
        `Sky plot of ${Format.plural(satellites.length, 'satellite')}. Arrow keys go from satellite to satellite.`,
        svg,
      ),
    });
    controller.show = show;
    followPointer(svg, controller);
    return figure;
  }

  return { chart };
})();
