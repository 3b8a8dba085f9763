// What all figures share: panels of bars along one axis, to be zoomed and pointed at.

const GUTTER = 62;  // left of the plot, for labels
const MARGIN = 10;  // right of it
const PRINT_WIDTH = 720;

const rect = (x0, y0, x1, y1) => `M${x0.toFixed(1)} ${y0.toFixed(1)}H${x1.toFixed(1)}` +
    `V${y1.toFixed(1)}H${x0.toFixed(1)}z`;
const path = (name, d) => d ? `<path class="${name}" d="${d}"/>` : '';
const line = (name, x0, y0, x1, y1) =>
    `<line class="${name}" x1="${x0}" y1="${y0}" x2="${x1}" y2="${y1}"/>`;
const label = (x, y, anchor, text, name = '') =>
    `<text x="${x}" y="${y}" text-anchor="${anchor}" class="${name}">${text}</text>`;

// What all figures share: the view along x, its axis and its controls. A kind of figure gives
//   whole()       [from, to] of everything
//   least()       how far one can zoom in
//   tick(step)    the least good step from `step` on;  tickText(x, step)
//   panels(plot)  what is drawn: objects of { height, draw(y0, y1) }
//   at(x)         what is there, in words
class Plot {
  constructor(figure, kind) {
    this.figure = figure;
    this.kind = kind;
    this.view = kind.whole();
    this.holder = document.createElement('div');
    this.controls = document.createElement('div');
    this.controls.className = 'controls';
    this.words = document.createElement('output');
    this.controls.append(this.words);
    this.addButton('+', 'zoom in', () => this.zoom(0.5));
    this.out = this.addButton('\u2212', 'zoom out', () => this.zoom(2));
    this.back = this.addButton('\u2039', 'earlier', () => this.move(-0.5));
    this.forth = this.addButton('\u203a', 'later', () => this.move(0.5));
    this.all = this.addButton('all', 'show everything', () => this.show(kind.whole()));
    figure.prepend(this.controls, this.holder);
    this.listen();
    new ResizeObserver(() => this.resize()).observe(figure);
  }

  addButton(text, title, action) {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = text;
    button.title = title;
    button.setAttribute('aria-label', title);
    button.addEventListener('click', action);
    this.controls.append(button);
    return button;
  }

  resize() {
    const width = Math.floor(this.figure.clientWidth);
    if (width > 0 && width !== this.width) this.draw(width);
  }

  show([from, to]) {
    const [first, last] = this.kind.whole();
    const span = Math.min(Math.max(to - from, this.kind.least()), last - first);
    from = Math.min(Math.max((from + to - span) / 2, first), last - span);
    this.view = [from, from + span];
    this.draw(this.width);
  }
  zoom(factor) {
    const [from, to] = this.view;
    const middle = (from + to) / 2, half = (to - from) / 2 * factor;
    this.show([middle - half, middle + half]);
  }
  move(share) {
    const by = (this.view[1] - this.view[0]) * share;
    this.show([this.view[0] + by, this.view[1] + by]);
  }

  x(value) {
    return GUTTER + (value - this.view[0]) / (this.view[1] - this.view[0]) * this.inner;
  }
  // x() inside the plot, for what may lie outside.
  clippedX(value) {
    return Math.min(Math.max(this.x(value), GUTTER), GUTTER + this.inner);
  }
  valueAt(event) {
    const box = this.svg.getBoundingClientRect();
    const x = (event.clientX - box.left) * this.width / box.width;
    const share = Math.min(Math.max((x - GUTTER) / this.inner, 0), 1);
    return this.view[0] + share * (this.view[1] - this.view[0]);
  }

  draw(width) {
    this.width = width;
    this.inner = width - GUTTER - MARGIN;
    let y = 0, html = '';
    const panels = this.kind.panels(this);
    for (const panel of panels) {
      html += panel.draw(y, y + panel.height);
      y += panel.height;
    }
    const bottom = y;
    const [from, to] = this.view;
    const step = this.kind.tick((to - from) / Math.max(2, Math.floor(this.inner / 70)));
    let grid = '', texts = '';
    for (let tick = Math.ceil(from / step) * step; tick <= to; tick += step) {
      const x = Math.round(this.x(tick)) + 0.5;
      grid += line('grid', x, 16, x, bottom);
      if (x < width - 24) texts += label(x, bottom + 14, 'middle', this.kind.tickText(tick, step));
    }
    html = grid + html + line('base', GUTTER, bottom + 0.5, width - MARGIN, bottom + 0.5) + texts +
        '<rect class="select" y="0" width="0" height="' + bottom + '"/>' +
        line('cursor', -9, 0, -9, bottom);
    // The document's parser puts it into the right namespace; all of it is numbers and own words.
    this.holder.innerHTML = `<svg viewBox="0 0 ${width} ${bottom + 20}" role="img" ` +
        `aria-label="plot">${html}</svg>`;
    this.svg = this.holder.firstChild;
    this.cursor = this.svg.querySelector('.cursor');
    this.selection = this.svg.querySelector('.select');
    const [first, last] = this.kind.whole();
    this.back.disabled = from <= first;
    this.forth.disabled = to >= last;
    this.out.disabled = this.all.disabled = this.back.disabled && this.forth.disabled;
    this.words.textContent = this.kind.viewText(this.view);
  }

  // Pointing tells what is there; dragging zooms to what was dragged over.
  listen() {
    let begin = null;
    const holder = this.holder;
    holder.addEventListener('pointerdown', event => {
      if (event.button !== 0) return;
      begin = this.valueAt(event);
      holder.setPointerCapture(event.pointerId);
    });
    holder.addEventListener('pointermove', event => {
      const value = this.valueAt(event), x = this.x(value);
      this.cursor.setAttribute('x1', x);
      this.cursor.setAttribute('x2', x);
      this.words.textContent = this.kind.at(value);
      if (begin === null) return;
      const other = this.x(begin);
      this.selection.setAttribute('x', Math.min(x, other));
      this.selection.setAttribute('width', Math.abs(x - other));
    });
    const drop = () => {
      begin = null;
      if (this.selection) this.selection.setAttribute('width', 0);
    };
    holder.addEventListener('pointerup', event => {
      const from = begin, to = this.valueAt(event);
      drop();
      if (from !== null && Math.abs(this.x(to) - this.x(from)) > 6) {
        this.show([Math.min(from, to), Math.max(from, to)]);
      }
    });
    holder.addEventListener('pointercancel', drop);
    holder.addEventListener('pointerleave', () => {
      this.cursor.setAttribute('x1', -9);
      this.cursor.setAttribute('x2', -9);
      this.words.textContent = this.kind.viewText(this.view);
    });
    holder.addEventListener('dblclick', () => this.show(this.kind.whole()));
  }

  // Bars over [start(i), start(i + 1)), dark up to low(i), light up to high(i), as many of them
  // side by side as there are pixels, otherwise merged. With an axis on the left.
  bars(y0, y1, name, unit, bars) {
    const [from, to] = this.view;
    const first = Math.max(0, lowerBound(bars.starts, from) - 1);
    let last = lowerBound(bars.starts, to);
    if (last === first) last = Math.min(first + 1, bars.starts.length);
    const pieces = [];
    if (last - first <= this.inner) {
      for (let i = first; i < last; i++) {
        const end = Math.min(bars.starts[i] + bars.width(i), bars.starts[i + 1] ?? Infinity);
        const x0 = this.x(bars.starts[i]), x1 = this.x(end);
        const wide = x1 - x0 > 4;
        pieces.push([x0, Math.max(x1 - (wide ? 1 : 0), x0 + 1), bars.low[i], bars.high[i],
          bars.marked && bars.marked[i] > 0]);
      }
    } else {
      const at = [];
      for (let i = first; i < last; i++) {
        const x = Math.floor(this.x(bars.starts[i]));
        const piece = at[x];
        if (piece) {
          piece[2] = Math.min(piece[2], bars.low[i]);
          piece[3] = Math.max(piece[3], bars.high[i]);
        } else {
          at[x] = [x, x + 1, bars.low[i], bars.high[i], false];
        }
        if (bars.marked && bars.marked[i] > 0) at[x][4] = true;
      }
      for (const x in at) pieces.push(at[x]);
      // Marks everywhere would hide what they mark.
      if (pieces.filter(piece => piece[4]).length > pieces.length / 4) {
        for (const piece of pieces) piece[4] = false;
      }
    }
    let most = 0, least = 0;
    for (const piece of pieces) {
      most = Math.max(most, piece[3]);
      least = Math.min(least, piece[2]);
    }
    const scale = this.axis(y0, y1, name, unit, least, most);
    let low = '', range = '', marked = '';
    for (const [left, right, min, max, mark] of pieces) {
      const x0 = Math.max(left, GUTTER), x1 = Math.min(right, GUTTER + this.inner);
      if (x1 <= x0) continue;
      const foot = scale.y(Math.max(min, 0));
      if (mark) {
        marked += rect(x0, scale.y(0), x1, scale.y(max));
        continue;
      }
      if (min > 0) low += rect(x0, scale.y(0), x1, foot);
      if (max > min) {
        const high = scale.y(max);
        range += rect(x0, Math.max(min > 0 ? foot : scale.y(min), high + 1), x1, high);
      } else if (max <= 0) {
        low += rect(x0, scale.y(max), x1, scale.y(max) - 1);
      }
    }
    return scale.html + path('range', range) + path('low', low) + path('key', marked);
  }

  axis(y0, y1, name, unit, least, most) {
    const top = y0 + 20, span = most - least || 1;
    const step = Math.max(decimalStep(span / Math.max(1, Math.floor((y1 - top) / 34))), 1);
    const highest = Math.max(Math.ceil(most / step), 1) * step;
    const lowest = Math.floor(least / step) * step;
    const y = value => y1 - (value - lowest) / (highest - lowest) * (y1 - top);
    let html = label(GUTTER, y0 + 12, 'start', name, 'name');
    for (let tick = lowest; tick <= highest + step / 2; tick += step) {
      const at = Math.round(y(tick)) + 0.5;
      html += line(tick === 0 ? 'base' : 'grid', GUTTER, at, GUTTER + this.inner, at);
      html += label(GUTTER - 6, at + 3.5, 'end', unit(Math.abs(tick) < step / 2 ? 0 : tick));
    }
    return { y, html };
  }
}
