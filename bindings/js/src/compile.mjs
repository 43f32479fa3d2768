export const compileGiven = async (source) =>
  source instanceof WebAssembly.Module ? source : WebAssembly.compile(source);
