// What the Node peers do alike: arguments as name=value, the measuring, one line of JSON.

export const given = Object.fromEntries(
  process.argv.slice(2).map((word) => {
    const equals = word.indexOf("=");
    return [word.slice(0, equals), word.slice(equals + 1)];
  }),
);

export async function measure(page) {
  const pages = async (count) => {
    for (let index = 0; index < count; ++index) await page(index + 1);
  };
  await pages(Number(given.warm));
  const before = process.cpuUsage();
  await pages(Number(given.pages));
  const used = process.cpuUsage(before);
  console.log(
    JSON.stringify({
      cpu_us: used.user + used.system,
      peak_kb: process.resourceUsage().maxRSS,
    }),
  );
}
