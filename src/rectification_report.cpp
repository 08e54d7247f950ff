#include "internal/rectification_report.h"

#include "internal/short_number.h"

namespace vorund::internal {
namespace {

using GraphProcessor::OptimalLine;

void printCandidate(std::ostream& out, const OptimalLine& line) {
    out << "    角度 " << ShortNumber{line.angle}
        << "°: 原长=" << ShortNumber{line.effective_length}
        << ", 惩罚=" << ShortNumber{line.direction_weight}
        << ", 调整长度=" << ShortNumber{line.score} << '\n';
}

}  // namespace

void printCuts(std::ostream& out, const OptimalLine& best, const std::vector<OptimalLine>& tried) {
    out << "  ✓ 最优角度: " << ShortNumber{best.angle} << "°\n"
        << "    有效长度: " << ShortNumber{best.effective_length} << " 像素\n"
        << "    方向权重: " << ShortNumber{best.direction_weight} << '\n'
        << "    总得分: " << ShortNumber{best.score} << '\n'
        << "  详细得分信息（每10度）:\n";
    for (const OptimalLine& line : tried) printCandidate(out, line);
}

void printStatistics(std::ostream& out, const std::map<int, OptimalLine>& lines) {
    out << "\n优化边界重整统计:\n";
    int aligned = 0;
    int nearly_aligned = 0;
    int other = 0;
    float length = 0.0F;
    float weight = 0.0F;
    for (const auto& [id, line] : lines) {
        out << "边界 " << id << ": 角度 " << ShortNumber{line.angle} << ", 长度 "
            << ShortNumber{line.effective_length} << ", 权重 " << ShortNumber{line.direction_weight}
            << ", 得分 " << ShortNumber{line.score} << '\n';
        if (line.direction_weight >= kLeastAlignedWeight) {
            ++aligned;
        } else if (line.direction_weight >= kLeastNearlyAlignedWeight) {
            ++nearly_aligned;
        } else {
            ++other;
        }
        length += line.effective_length;
        weight += line.direction_weight;
    }
    const float count = lines.empty() ? 1.0F : static_cast<float>(lines.size());
    out << "\n方向分布:\n"
        << "水平/垂直对齐: " << aligned << " 条\n"
        << "接近水平/垂直: " << nearly_aligned << " 条\n"
        << "其他角度: " << other << " 条\n"
        << "\n平均统计:\n"
        << "  平均有效长度: " << length / count << '\n'
        << "  平均方向权重: " << weight / count << '\n';
}

}  // namespace vorund::internal
