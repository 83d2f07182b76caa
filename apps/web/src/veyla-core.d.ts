declare module "veyla-core" {
  const createVeyla: (options?: { locateFile?: (name: string) => string }) => Promise<unknown>;
  export default createVeyla;
}
