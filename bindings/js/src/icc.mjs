// ICC profiles: whether one can be declared of a picture.
import { be32 } from './bytes.mjs';

const CLASSES = ['scnr', 'mntr', 'prtr', 'spac'];  // those that describe pictures
const signature = (profile, at) => String.fromCharCode(...profile.subarray(at, at + 4));

/** Only profiles for RGB can be declared: the library says of each that it has three components. */
export function isRgbProfile(profile) {
  return profile.length >= 132 && signature(profile, 36) === 'acsp' && be32(profile, 0) <= profile.length &&
    CLASSES.includes(signature(profile, 12)) && signature(profile, 16) === 'RGB ';
}
