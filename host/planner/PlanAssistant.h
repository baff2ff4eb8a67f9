#ifndef TRUNNION_HOST_PLANNER_PLAN_ASSISTANT_H
#define TRUNNION_HOST_PLANNER_PLAN_ASSISTANT_H

#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "planner/PathPlan.h"
#include "planner/PlanQuestions.h"
#include "planner/Workplace.h"

namespace host
{

/// On the ranks that do not lead: finds candidates and builds rows as the leader's plan asks. Holds
/// no points but those of the question.
class PlanAssistant
{
  public:
    /// @param ofPlan as the leader's, but that its path needs no points; outlives this
    explicit PlanAssistant(const PlanRequest& ofPlan) : request(ofPlan) {}

    void Answer(std::string_view question, ByteWriter& answer);

  private:
    void Answer(FindQuestion question, ByteWriter& answer);
    void Answer(FollowQuestion question, ByteWriter& answer);
    void Answer(BuildQuestion question, ByteWriter& answer);
    Workplace& PlaceFor(const AskedPoints& points, std::vector<Vec3> xAxes);

    const PlanRequest& request;
    /// Of each stream, without and with the whole orientation.
    std::map<std::pair<const LoadedStream*, bool>, std::unique_ptr<Workplace>> places;
};

} // namespace host

#endif
