// Dissolve; mirrors the rows of the CPU: byte images count in whole codes, float images do not.

_Pragma("OPENCL FP_CONTRACT OFF")

enum { ADDITIVE, SUBTRACTIVE, SUBTRACTIVE_CROSSFADE, COLOR_BLEED, COLOR_MORPH, THRESHOLD_DISSOLVE, THRESHOLD_APPEAR,
       THROUGH_GRAY, THROUGH_COLOR, CHANNEL_BY_CHANNEL };

// p times scale with halves rounded up. The product's own rounding must not make a half.
int rounded(float p, float scale)
{
    const float product = p * scale;
    const int whole = (int)product;
    return (product - whole) - 0.5f + fma(p, scale, -product) >= 0.0f ? whole + 1 : whole;
}

float4 limited(float4 c) { return (float4)(min(c.xyz, c.w), c.w); }
int4 limited_codes(int4 c) { return (int4)(min(c.xyz, c.w), c.w); }

int4 blend(int4 a, int4 b, int4 fade)
{
    const int4 d = (b - a) * fade + 128;
    return clamp(a + ((d + (d >> 8)) >> 8), 0, 255);
}

float4 lerp(float4 a, float4 b, float4 t)
{
    return select(select(a + (b - a) * t, b, t >= 1.0f), a, t <= 0.0f);
}

// What has passed of each channel after so much of the steps.
float4 passage(float4 speed, float steps, float full) { return clamp(steps * (1.0f + speed), 0.0f, full); }

float most_steps(float4 speed, float full)
{
    const float4 steps = full / (1.0f + speed);
    return max(max(steps.x, steps.y), max(steps.z, steps.w));
}

int4 mixed_codes(int4 f, int4 t, int mode, float p, float4 v)
{
    const int w = rounded(p, 1024.0f), q = rounded(p, 255.0f), second = w >= 512;
    const int4 base = second ? t : f, other = second ? f : t;
    const int4 part = (other * (second ? 2 * (1024 - w) : 2 * w)) >> 10;
    const int alpha = blend(f, t, (int4)(q)).w;
    const int late = q >= 127, fade = late ? clamp(2 * q - 254, 0, 255) : 2 * q;
    if (mode == ADDITIVE) return min(base + part, 255);
    if (mode == SUBTRACTIVE) return limited_codes((int4)(convert_int4(abs(base - part)).xyz, alpha));
    if (mode == SUBTRACTIVE_CROSSFADE)
        return limited_codes((int4)(convert_int4(abs((((t + f) * w) >> 10) - f)).xyz, alpha));
    if (mode == COLOR_BLEED || mode == COLOR_MORPH) {
        const int steps = (int)most_steps(v, 255.0f), done = rounded(p, (float)steps);
        const int4 passed = convert_int4(passage(v, done, 255.0f));
        const int4 left = convert_int4(passage(v, steps - done, 255.0f));
        if (mode == COLOR_MORPH) return p <= 0.0f ? f : p >= 1.0f ? t : limited_codes(f + clamp(t - f, -passed, passed));
        return limited_codes(min(max(f - passed, 0) + max(t - left, 0), (int4)(INT_MAX, INT_MAX, INT_MAX, 255)));
    }
    if (mode == THRESHOLD_DISSOLVE) return (f.x + f.y + f.z) * 4 / 3 > w ? f : t;
    if (mode == THRESHOLD_APPEAR) return (t.x + t.y + t.z) * 4 / 3 < 1024 - w ? f : t;
    if (mode == THROUGH_GRAY) {
        const int gray = (f.x + f.y + f.z + t.x + t.y + t.z) / 6;
        const int4 fades = (int4)(fade, fade, fade, q);
        return late ? blend((int4)(gray, gray, gray, f.w), t, fades) : blend(f, (int4)(gray, gray, gray, t.w), fades);
    }
    if (mode == THROUGH_COLOR) {
        const int4 color = convert_int4(255.0f * clamp((float4)(v.xyz * v.w, v.w), 0.0f, 1.0f));
        return late ? blend(color, t, (int4)(fade)) : blend(f, color, (int4)(fade));
    }
    return limited_codes(blend(f, t, (int4)(clamp(3 * q - (int3)(0, 255, 510), 0, 255), q)));
}

float4 mixed_floats(float4 f, float4 t, int mode, float p, float4 v, float full)
{
    const int second = p >= 0.5f;
    const float4 base = second ? t : f, part = (second ? f : t) * (second ? 2.0f * (1.0f - p) : 2.0f * p);
    const float alpha = lerp(f, t, (float4)(p)).w;
    const float fade = second ? 2.0f * p - 1.0f : 2.0f * p;
    if (p <= 0.0f && (mode == ADDITIVE || mode == COLOR_MORPH || mode == THROUGH_GRAY || mode == THROUGH_COLOR)) return f;
    if (p >= 1.0f && (mode == ADDITIVE || mode == COLOR_MORPH || mode == THROUGH_GRAY || mode == THROUGH_COLOR)) return t;
    if (mode == ADDITIVE) return min(base + part, full);
    if (mode == SUBTRACTIVE) return limited((float4)(fabs(base - part).xyz, alpha));
    if (mode == SUBTRACTIVE_CROSSFADE) return limited((float4)(fabs((t + f) * p - f).xyz, alpha));
    if (mode == COLOR_BLEED || mode == COLOR_MORPH) {
        const float steps = most_steps(v, full), done = steps * p;
        const float4 passed = passage(v, done, full), left = passage(v, steps - done, full);
        if (mode == COLOR_MORPH) return limited(max(min(f + passed, t), f - passed));
        const float4 sum = max(f - passed, 0.0f) + max(t - left, 0.0f);
        return limited((float4)(sum.xyz, min(sum.w, full)));
    }
    if (mode == THRESHOLD_DISSOLVE) return f.x + f.y + f.z > p * (3.0f * 1024.0f / 1020.0f) ? f : t;
    if (mode == THRESHOLD_APPEAR) return t.x + t.y + t.z < (1.0f - p) * (3.0f * 1024.0f / 1020.0f) ? f : t;
    if (mode == THROUGH_GRAY) {
        const float gray = (f.x + f.y + f.z + t.x + t.y + t.z) / 6.0f;
        const float4 fades = (float4)(fade, fade, fade, p);
        return second ? lerp((float4)(gray, gray, gray, f.w), t, fades) : lerp(f, (float4)(gray, gray, gray, t.w), fades);
    }
    if (mode == THROUGH_COLOR) {
        const float4 color = (float4)(v.xyz * v.w, v.w);
        return second ? lerp(color, t, (float4)(fade)) : lerp(f, color, (float4)(fade));
    }
    return limited(lerp(f, t, (float4)(clamp(3.0f * p - (float3)(0.0f, 1.0f, 2.0f), 0.0f, 1.0f), p)));
}

__kernel void k5d8e21c40(__read_only image2d_t from, __read_only image2d_t to, __write_only image2d_t dst, int width,
                         int height, int mode, int unused, float p, float full, float4 v)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    (void)unused;
    if (mode < ADDITIVE || mode > CHANNEL_BY_CHANNEL) return;

    const float4 f = read_imagef(from, nearest, at), t = read_imagef(to, nearest, at);
    if (get_image_channel_data_type(dst) == CLK_UNORM_INT8) {
        const int4 codes = mixed_codes(convert_int4(f * 255.0f + 0.5f), convert_int4(t * 255.0f + 0.5f), mode, p, v);
        write_imagef(dst, at, convert_float4(codes) / 255.0f);
    } else {
        write_imagef(dst, at, mixed_floats(f, t, mode, p, v, full));
    }
}
