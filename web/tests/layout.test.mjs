// Where pictures go on their pages.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { layOut } from './layout.mjs';

const usual = { size: 'picture', orientation: 'auto', fit: 'into', border: 0 };
const near = (found, wanted) => found.forEach((value, i) => assert.ok(Math.abs(value - wanted[i]) < 1e-9, `${found} is not ${wanted}`));
const box = ({ x, y, width, height, rotate }) => [x, y, width, height, rotate];
const A4 = [210 * 72 / 25.4, 297 * 72 / 25.4];

test('a page as its picture has the size that the resolution says', () => {
  near(layOut({ width: 960, height: 480 }, 0, usual).page, [720, 360]);
  near(layOut({ width: 600, height: 300, resolution: { x: 300, y: 150 } }, 0, usual).page, [144, 144]);
});

test('a border is added to a page as its picture, and taken from a sheet', () => {
  const { page, box: drawn } = layOut({ width: 96, height: 96 }, 0, { ...usual, border: 25.4 });
  near(page, [216, 216]);
  near(box(drawn), [72, 72, 72, 72, 0]);
  const sheet = layOut({ width: 96, height: 96 }, 0, { ...usual, size: 'Letter', border: 25.4 });
  near(box(sheet.box), [72, 162, 468, 468, 0]);
});

test('a turned picture stands in the middle of a turned page', () => {
  const { page, box: drawn } = layOut({ width: 960, height: 480 }, 90, usual);
  near(page, [360, 720]);
  near(box(drawn), [(360 - 720) / 2, (720 - 360) / 2, 720, 360, -90]);
});

test('a sheet lies where its picture does, unless it is told', () => {
  near(layOut({ width: 2, height: 1 }, 0, { ...usual, size: 'A4' }).page, [A4[1], A4[0]]);
  near(layOut({ width: 2, height: 1 }, 90, { ...usual, size: 'A4' }).page, A4);
  near(layOut({ width: 2, height: 1 }, 0, { ...usual, size: 'A4', orientation: 'portrait' }).page, A4);
  near(layOut({ width: 1, height: 2 }, 0, { ...usual, size: 'A4', orientation: 'landscape' }).page, [A4[1], A4[0]]);
});

test('a picture that fills the page is cut at the border, and one that is not enlarged keeps its size', () => {
  const filled = layOut({ width: 100, height: 100 }, 0, { ...usual, size: 'Letter', fit: 'fill', border: 25.4 });
  near(box(filled.box), [-18, 72, 648, 648, 0]);
  near(filled.cut, [72, 72, 468, 648]);
  near(box(layOut({ width: 96, height: 96 }, 0, { ...usual, size: 'Letter', fit: 'shrink' }).box), [270, 360, 72, 72, 0]);
});

test('pages beyond what PDF has are brought inside', () => {
  near(layOut({ width: 40000, height: 20000 }, 0, usual).page, [14400, 7200]);
  const small = layOut({ width: 1, height: 1 }, 0, usual);
  near(small.page, [3, 3]);
  near(box(small.box), [0, 0, 3, 3, 0]);
});

test('a border without room for the picture is refused', () => {
  assert.throws(() => layOut({ width: 1, height: 1 }, 0, { ...usual, size: 'A5', border: 80 }), /leaves no room/);
});
