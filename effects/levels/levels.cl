// Levels; mirrors the CPU's mapping. range: input start, 1 / input range, output start, output range. curve: threshold,
// slope below it, and above it ((x + s2) s3)^s4 s5 + s6; s7 is what the input start lacks in single precision.

_Pragma("OPENCL FP_CONTRACT OFF")

enum channel { colors, first, second, third, colors_and_alpha };

float level(float x, float4 range, float8 curve, int bytes)
{
    const float place = fmin(fmax((x - range.x - curve.s7) * range.y, 0.0f), 1.0f);
    const float bent = place < curve.s0 ? place * curve.s1
                                        : pow((place + curve.s2) * curve.s3, curve.s4) * curve.s5 + curve.s6;
    const float result = bent * range.w + range.z;
    return bytes ? floor(result * 255.0f + 0.5f) / 255.0f : result; // exact halves up
}

// A pixel by place in memory: the channel's components limited to alpha, then alpha itself.
float4 map_pixel(float4 c, float4 range, float8 curve, int channel, int bytes)
{
    if (!(c.w > 0.0f)) return (float4)(0.0f);
    const int every = channel == colors || channel == colors_and_alpha;
    float4 result = c;
    if (every || channel == first) result.x = fmin(level(c.x, range, curve, bytes), c.w);
    if (every || channel == second) result.y = fmin(level(c.y, range, curve, bytes), c.w);
    if (every || channel == third) result.z = fmin(level(c.z, range, curve, bytes), c.w);
    if (channel == colors_and_alpha) result.w = level(c.w, range, curve, bytes);
    return result;
}

void map_at(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range, float8 curve,
            int channel, int bytes)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up

    const float4 c = read_imagef(src, nearest, at);
    const int blue_first = get_image_channel_order(src) == CLK_BGRA;
    const float4 result = map_pixel(blue_first ? c.zyxw : c, range, curve, channel, bytes);
    write_imagef(dst, at, blue_first ? result.zyxw : result);
}

// One kernel per depth and channel: bytes 0 to 4, floats 5 to 9.

__kernel void kebd3ac110(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, colors, 1);
}

__kernel void kebd3ac111(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, first, 1);
}

__kernel void kebd3ac112(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, second, 1);
}

__kernel void kebd3ac113(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, third, 1);
}

__kernel void kebd3ac114(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, colors_and_alpha, 1);
}

__kernel void kebd3ac115(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, colors, 0);
}

__kernel void kebd3ac116(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, first, 0);
}

__kernel void kebd3ac117(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, second, 0);
}

__kernel void kebd3ac118(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, third, 0);
}

__kernel void kebd3ac119(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 range,
                         float8 curve)
{
    map_at(src, dst, width, height, range, curve, colors_and_alpha, 0);
}
