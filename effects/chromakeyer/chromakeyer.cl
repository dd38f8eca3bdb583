// Chroma keyer; mirrors the CPU's matte, its refinement and its blur. color: the key's red, green, blue, and the low
// threshold; tone: the high threshold, and the key's hue, saturation and lightness.

_Pragma("OPENCL FP_CONTRACT OFF")

const sampler_t edge_repeated = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;

// In sixths of a turn, from the pure colour before the largest component or back from the one after it.
float hue_of(float3 c, float most, float least)
{
    const float d = most - least;
    if (c.x == most) return c.y == least ? 5.0f + (most - c.z) / d : 1.0f - (most - c.y) / d;
    if (c.y == most) return c.z == least ? 1.0f + (most - c.x) / d : 3.0f - (most - c.z) / d;
    return c.x == least ? 3.0f + (most - c.y) / d : 5.0f - (most - c.x) / d;
}

// Bytes are taken as codes, and their matte is truncated to one.
float matte_of(float4 c, float4 color, float4 tone, int bytes)
{
    if (bytes) c = rint(c * 255.0f);
    const float full = bytes ? 255.0f : 1.0f, alpha = c.w > 0.0f && c.w < full ? c.w : full;
    const float most = fmax(fmax(c.x, c.y), c.z), least = fmin(fmin(c.x, c.y), c.z), sum = most + least;
    const float l = sum / alpha * 0.5f;
    const int grey = sum <= 0.0f || most <= least;
    const float s = grey ? 0.0f : (most - least) / (l <= 0.5f ? sum : alpha + alpha - sum);
    const float turn = fabs((grey ? 0.0f : hue_of(c.xyz, most, least) / 6.0f) - tone.y);
    const float hue = turn > 0.5f ? 1.0f - turn : turn;
    const float3 rgb = c.xyz / alpha - color.xyz;
    const float distance =
        (sqrt(dot(rgb, rgb)) * 1.7320508f + (2.0f * hue + fabs(l - tone.w) + fabs(s - tone.z)) / 3.0f) * 0.5f;
    const float range = tone.x - color.w;
    if (distance < color.w) return 0.0f;
    if (!(distance <= tone.x - 1e-6f)) return 1.0f;
    const float matte = fabs(range) < 1e-6f ? 0.0f : clamp((distance - color.w) / range, 0.0f, 1.0f);
    return bytes ? trunc(matte * 255.0f) / 255.0f : matte;
}

float4 keyed(float4 c, float matte, int show)
{
    const float alpha = fmin(c.w, matte);
    return show ? (float4)(alpha, alpha, alpha, 1.0f) : (float4)(c.xyz, alpha);
}

__kernel void k9dad905a0(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, int show,
                         float4 color, float4 tone)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    const float4 c = read_imagef(src, edge_repeated, at);
    const int bytes = get_image_channel_data_type(src) == CLK_UNORM_INT8;
    write_imagef(dst, at, keyed(c, matte_of(c, color, tone, bytes), show));
}

// Mattes of three neighbours in a row.
float3 mattes_at(__read_only image2d_t src, int x, int y, int2 last, float4 color, float4 tone, int bytes)
{
    float mattes[3];
    for (int i = 0; i < 3; ++i) {
        const int2 at = clamp((int2)(x - 1 + i, y), (int2)(0), last);
        mattes[i] = matte_of(read_imagef(src, edge_repeated, at), color, tone, bytes);
    }
    return (float3)(mattes[0], mattes[1], mattes[2]);
}

// The matte as it is blurred, and whether a neighbour is transparent.
float2 refined(float3 before, float3 here, float3 after)
{
    const float3 least3 = fmin(before, after);
    const float least = fmin(fmin(fmin(least3.x, least3.y), least3.z), fmin(here.x, here.z));
    const float mean = (before.x + before.y + before.z + here.x + here.z + after.x + after.y + after.z) / 8.0f;
    return least <= 0.0f ? (float2)(fmin(mean, here.y), 1.0f) : (float2)(here.y, 0.0f);
}

// The part of a Gaussian that lies inside the edges.
float share_inside(int at, int length, float sigma)
{
    const float scale = 0.70710678f / sigma;
    return 0.5f * (erf((at + 0.5f) * scale) + erf((length - at - 0.5f) * scale));
}

// One direction of the recursion along a line: each section is n0, n1, m1, m2, d1, d2.
typedef struct {
    float x1, x2, a1, a2, b1, b2;
} state;

float advance(state* s, float x, int back, float8 one, float8 two)
{
    const float a = (back ? one.s2 * s->x1 + one.s3 * s->x2 : one.s0 * x + one.s1 * s->x1) - one.s5 * s->a2 - one.s4 * s->a1;
    const float b = (back ? two.s2 * s->x1 + two.s3 * s->x2 : two.s0 * x + two.s1 * s->x1) - two.s5 * s->b2 - two.s4 * s->b1;
    s->x2 = s->x1, s->x1 = x, s->a2 = s->a1, s->a1 = a, s->b2 = s->b1, s->b1 = b;
    return a + b;
}

// The weighted sum, as far as it lies inside, from a ring of the last sixteen values.
float weighted(const float2* ring, int at, int length, int taps, const float* weights)
{
    float sum = 0.0f, whole = 0.0f;
    for (int k = -taps; k <= taps; ++k) {
        if (at + k < 0 || at + k >= length) continue;
        const float w = weights[abs(k)];
        sum += w * ring[(at + k) & 15].x;
        whole += w;
    }
    return sum / whole;
}

// Columns: the refined matte, blurred. Items below the width run forwards, the others backwards, and each result is a
// sum of both. shape: the taps of a weighted sum, which needs no way back, or -1; sigma.
__kernel void k9dad905a1(__read_only image2d_t src, __write_only image2d_t forward, __write_only image2d_t backward,
                         float8 one, float8 two, float8 weights, float8 shape, float8 unused, int width, int height,
                         float4 color, float4 tone)
{
    const int item = get_global_id(0), back = item >= width, x = back ? item - width : item, way = back ? -1 : 1;
    const int taps = (int)shape.s0, bytes = get_image_channel_data_type(src) == CLK_UNORM_INT8;
    const int2 last = (int2)(width - 1, height - 1);
    const float w[8] = {weights.s0, weights.s1, weights.s2, weights.s3, weights.s4, weights.s5, weights.s6, weights.s7};
    (void)unused;
    if (back && taps >= 0) {
        for (int y = 0; y < height; ++y) write_imagef(backward, (int2)(x, y), (float4)(0.0f));
        return;
    }
    const int first = back ? height - 1 : 0;
    float3 here = mattes_at(src, x, first, last, color, tone, bytes), before = here;
    float2 ring[16];
    state s = {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
    for (int i = 0; i < height + max(taps, 0); ++i) {
        const int y = first + i * way;
        if (i < height) {
            const float3 after = mattes_at(src, x, y + way, last, color, tone, bytes);
            const float2 value = refined(before, here, after);
            before = here, here = after;
            ring[i & 15] = value;
            if (taps < 0) {
                const float sum = advance(&s, value.x, back, one, two) / share_inside(y, height, shape.s1);
                const float4 result = (float4)(sum, value.y, 0.0f, 1.0f);
                if (back) {
                    write_imagef(backward, (int2)(x, y), result);
                } else {
                    write_imagef(forward, (int2)(x, y), result);
                }
            }
        }
        if (taps >= 0 && i >= taps)
            write_imagef(forward, (int2)(x, i - taps), (float4)(weighted(ring, i - taps, height, taps, w), ring[(i - taps) & 15].y, 0.0f, 1.0f));
    }
}

// Rows, of the sum of the columns' two results.
__kernel void k9dad905a2(__read_only image2d_t first, __read_only image2d_t second, __write_only image2d_t forward,
                         __write_only image2d_t backward, float8 one, float8 two, float8 weights, float8 shape,
                         float8 unused, int width, int height)
{
    const int item = get_global_id(0), back = item >= height, y = back ? item - height : item;
    const int taps = (int)shape.s0;
    const float w[8] = {weights.s0, weights.s1, weights.s2, weights.s3, weights.s4, weights.s5, weights.s6, weights.s7};
    (void)unused;
    float2 ring[16];
    state s = {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
    for (int i = 0; i < width + max(taps, 0); ++i) {
        const int x = back ? width - 1 - i : i;
        if (i < width) {
            const float4 value = read_imagef(first, edge_repeated, (int2)(x, y));
            const float sum = value.x + read_imagef(second, edge_repeated, (int2)(x, y)).x;
            ring[i & 15] = (float2)(sum, value.y);
            if (taps < 0) {
                const float part = advance(&s, sum, back, one, two) / share_inside(x, width, shape.s1);
                const float4 result = (float4)(part, value.y, 0.0f, 1.0f);
                if (back) {
                    write_imagef(backward, (int2)(x, y), result);
                } else {
                    write_imagef(forward, (int2)(x, y), result);
                }
            }
        }
        if (taps >= 0 && i >= taps) {
            const int2 at = (int2)(i - taps, y);
            if (back) {
                write_imagef(backward, at, (float4)(0.0f));
            } else {
                write_imagef(forward, at, (float4)(weighted(ring, at.x, width, taps, w), ring[at.x & 15].y, 0.0f, 1.0f));
            }
        }
    }
}

// options: the place of the key's largest component, and whether the matte is shown.
__kernel void k9dad905a3(__read_only image2d_t src, __read_only image2d_t first, __read_only image2d_t second,
                         __write_only image2d_t dst, int width, int height, float4 options)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    float4 c = read_imagef(src, edge_repeated, at);
    const float4 soft = read_imagef(first, edge_repeated, at);
    const float matte = clamp(soft.x + read_imagef(second, edge_repeated, at).x, 0.0f, 1.0f);
    if (soft.y > 0.5f) { // the screen's light is taken out of the edges
        if (options.x == 0.0f) c.x = fmin(c.x, fmax(c.y, c.z));
        if (options.x == 1.0f) c.y = fmin(c.y, fmax(c.x, c.z));
        if (options.x == 2.0f) c.z = fmin(c.z, fmax(c.x, c.y));
    }
    write_imagef(dst, at, keyed(c, matte, options.y != 0.0f));
}
