// The frame of every chart: title, controls, legend, the drawing itself, what its cursor shows, and its values as a
// table. Charts are worked by keys, and each by the same ones.
const Figure = (() => {
  'use strict';

  const kFarSteps = 10; // with Shift
  const kZoomFactor = 2;

  // What a controller does, by key. Each answers with the text to be shown and announced, if any.
  const kKeys = {
    ArrowLeft: (controller, event) => controller.move(event.shiftKey ? -kFarSteps : -1),
    ArrowRight: (controller, event) => controller.move(event.shiftKey ? kFarSteps : 1),
    ArrowUp: (controller) => controller.choose?.(-1),
    ArrowDown: (controller) => controller.choose?.(1),
    Home: (controller) => controller.edge(-1),
    End: (controller) => controller.edge(1),
    '+': (controller) => controller.zoom?.(kZoomFactor),
    '=': (controller) => controller.zoom?.(kZoomFactor),
    '-': (controller) => controller.zoom?.(1 / kZoomFactor),
    0: (controller) => controller.reset?.(),
    Escape: (controller) => controller.clear(),
  };

  function onKey(event, controller) {
    const act = kKeys[event.key];
    if (!act || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    const text = act(controller, event);
    if (text) Dom.announce(text);
  }

  // A drawing that can be focused. `label` is what a screen reader says about it.
  function plot(kind, label, ...children) {
    return Dom.make(
      'div',
      { class: `plot ${kind}`, tabindex: 0, role: 'img', 'aria-label': label, 'aria-describedby': 'keys-short' },
      children,
    );
  }

  // `titled`: the section already has this title. `table` builds the table of the chart when it is wanted.
  function make({ name, title, titled = false, note, controls = [], legend, plot: drawing, controller, table }) {
    const readout = Dom.make('p', { class: 'readout' });
    drawing.addEventListener('keydown', (event) => onKey(event, controller));
    const figure = Dom.make(
      'figure',
      { class: 'chart', 'data-chart': name },
      Dom.make(
        'figcaption',
        {},
        Dom.make('strong', { class: titled && 'unseen' }, title),
        note && Dom.make('span', { class: 'muted' }, note),
      ),
      controls.length > 0 && Dom.make('div', { class: 'controls' }, controls),
      legend,
      drawing,
      readout,
      Table.onDemand(`Table: ${title}`, table),
    );
    return { figure, show: (text) => (readout.textContent = text ?? '') };
  }

  // A list to choose from: [['value', 'text'], ...].
  function choice(label, options, onChoice) {
    const select = Dom.make(
      'select',
      {},
      options.map(([value, text]) => Dom.make('option', { value }, text)),
    );
    select.addEventListener('change', () => onChoice(select.value));
    return { element: Dom.make('label', {}, `${label} `, select), select };
  }

  return { make, plot, choice };
})();
