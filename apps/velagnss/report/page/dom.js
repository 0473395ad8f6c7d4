// Elements of the page. Texts become text nodes, never markup.
const Dom = (() => {
  'use strict';

  const kSvg = 'http://www.w3.org/2000/svg';

  // True as the value of an attribute: those of ARIA spell it out, all others only have to be there.
  const textOf = (name, value) => (value === true ? (name.startsWith('aria-') ? 'true' : '') : value);

  // A missing attribute or child (undefined, null, false) is left out.
  function fill(element, attributes, children) {
    for (const [name, value] of Object.entries(attributes)) {
      if (value !== undefined && value !== null && value !== false)
        element.setAttribute(name, textOf(name, value));
    }
    element.append(
      ...children.flat(Infinity).filter((child) => child !== undefined && child !== null && child !== false),
    );
    return element;
  }

  const make = (name, attributes = {}, ...children) => fill(document.createElement(name), attributes, children);
  const svg = (name, attributes = {}, ...children) => fill(document.createElementNS(kSvg, name), attributes, children);

  // Replaces all children.
  const replace = (element, ...children) => element.replaceChildren(...children.flat(Infinity).filter(Boolean));

  // What a screen reader says next.
  function announce(text) {
    document.getElementById('announcer').textContent = text;
  }

  return { make, svg, replace, announce };
})();
