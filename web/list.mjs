// The pictures in their order, as a list that the pointer and the keyboard change.
import { showThumbnail } from './thumbnails.mjs';

const BUTTONS = [
  ['←', 'Move %s earlier', (list, item) => list.move(item, -1)],
  ['→', 'Move %s later', (list, item) => list.move(item, 1)],
  ['⟳', 'Turn %s clockwise', (list, item) => list.turn(item)],
  ['✕', 'Remove %s', (list, item) => list.remove(item)],
];
const KEYS = { ArrowLeft: -1, ArrowUp: -1, ArrowRight: 1, ArrowDown: 1 };

export class PictureList {
  items = [];

  /** changed() is called when there are more or fewer; say(words) tells what those see who look. */
  constructor(element, changed, say) {
    Object.assign(this, { element, changed, say });
    element.addEventListener('dragstart', (event) => this.#dragStart(event));
    element.addEventListener('dragover', (event) => this.#dragOver(event));
    element.addEventListener('dragend', () => this.#dragEnd());
    element.addEventListener('keydown', (event) => this.#key(event));
  }

  add(files) {
    for (const file of files) {
      const item = { file, turn: 0 };
      item.element = this.#render(item);
      this.items.push(item);
      this.element.append(item.element);
      showThumbnail(item.element.querySelector('.thumb'), file);
    }
    this.changed();
    this.say(`${files.length} ${files.length === 1 ? 'picture' : 'pictures'} added, ${this.items.length} in all.`);
  }

  move(item, by) {
    const from = this.items.indexOf(item), to = from + by;
    if (to < 0 || to >= this.items.length) return;
    const focused = document.activeElement;
    const other = this.items[to].element;
    if (by < 0) other.before(item.element);
    else other.after(item.element);
    focused?.focus();
    this.#readOrder();
    this.say(`${item.file.name} is page ${to + 1} of ${this.items.length}.`);
  }

  turn(item) {
    item.turn = (item.turn + 90) % 360;
    item.element.querySelector('.thumb').dataset.turn = item.turn;
    this.say(`${item.file.name} is turned by ${item.turn} degrees.`);
  }

  remove(item) {
    const at = this.items.indexOf(item);
    item.element.remove();
    this.items.splice(at, 1);
    const next = this.items[Math.min(at, this.items.length - 1)];
    (next?.element.querySelector('button:last-of-type') ?? document.getElementById('choose')).focus();
    this.changed();
    this.say(`${item.file.name} is removed, ${this.items.length} left.`);
  }

  clear() {
    const count = this.items.length;
    this.items.length = 0;
    this.element.replaceChildren();
    document.getElementById('choose').focus();
    this.changed();
    this.say(`${count} pictures removed.`);
  }

  /** Marks those that cannot be used, and only those. */
  showFailures(failures) {
    for (const { element } of this.items) {
      element.classList.remove('wrong');
      element.querySelector('.why')?.remove();
    }
    for (const { item, why } of failures) {
      item.element.classList.add('wrong');
      const words = document.createElement('p');
      words.className = 'why';
      words.textContent = why;
      item.element.append(words);
    }
  }

  #render(item) {
    const element = document.createElement('li');
    element.draggable = true;
    const thumb = document.createElement('div');
    thumb.className = 'thumb';
    const name = document.createElement('div');
    name.className = 'name';
    name.textContent = name.title = item.file.name;
    const buttons = document.createElement('div');
    buttons.className = 'buttons';
    for (const [sign, label, act] of BUTTONS) {
      const button = document.createElement('button');
      button.type = 'button';
      button.textContent = sign;
      button.ariaLabel = label.replace('%s', () => item.file.name);
      button.addEventListener('click', () => act(this, item));
      buttons.append(button);
    }
    element.append(thumb, name, buttons);
    return element;
  }

  #itemOf(target) {
    const element = target.closest?.('li');
    return this.items.find((item) => item.element === element);
  }

  #key(event) {
    const item = this.#itemOf(event.target);
    if (!item) return;
    if (event.altKey && KEYS[event.key]) this.move(item, KEYS[event.key]);
    else if (event.key === 'Delete') this.remove(item);
    else return;
    event.preventDefault();
  }

  #dragStart(event) {
    this.dragged = this.#itemOf(event.target);
    if (!this.dragged) return;
    event.dataTransfer.effectAllowed = 'move';
    event.dataTransfer.setData('text/plain', this.dragged.file.name);
    this.dragged.element.classList.add('dragged');
  }

  #dragOver(event) {
    if (!this.dragged) return;
    event.preventDefault();
    const over = this.#itemOf(event.target);
    if (!over || over === this.dragged) return;
    const comesLater = this.items.indexOf(over) > this.items.indexOf(this.dragged);
    over.element[comesLater ? 'after' : 'before'](this.dragged.element);
    this.#readOrder();
  }

  #dragEnd() {
    if (!this.dragged) return;
    this.dragged.element.classList.remove('dragged');
    this.say(`${this.dragged.file.name} is page ${this.items.indexOf(this.dragged) + 1} of ${this.items.length}.`);
    this.dragged = undefined;
  }

  #readOrder() {
    const order = new Map([...this.element.children].map((element, i) => [element, i]));
    this.items.sort((a, b) => order.get(a.element) - order.get(b.element));
  }
}
