// The one instance of the module that a thread has.
import { Library } from './library.mjs';
import { compile } from './platform.mjs';

let loading;

/**
 * Gets the module ready; documents do so by themselves. A source says where it is, where that is not
 * beside this file: a URL, a Response, bytes or a WebAssembly.Module.
 */
export function load(source) {
  loading ??= compile(source).then(Library.from).catch((error) => {
    loading = undefined;
    throw error;
  });
  return loading;
}
